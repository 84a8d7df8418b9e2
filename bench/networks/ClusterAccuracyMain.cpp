// How often the networks are right on simulated slices that they were not trained on, beside the
// best cosine match; confusion by charge, accuracy by mass; clusters without truth after the
// subtraction. Usage: zel_cluster_accuracy [SCENES], 100 by default.

#include "bench/networks/SceneReport.h"
#include "bench/networks/SliceReport.h"
#include "common/core_mini/src/algo/networks/ChargeDeterminatorNN.h"
#include "common/core_mini/src/algo/networks/MonoisotopeDeterminatorNN.h"
#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"

#include <cstdio>
#include <cstdlib>

namespace zel::bench {

namespace {

/// Training draws its scenes with seed 1.
constexpr std::uint64_t kHeldOutSeed = 2;

int run(std::uint64_t sceneCount)
{
    ChargeDeterminatorNN chargeDeterminator;
    MonoisotopeDeterminatorNN offsetDeterminator;
    const QString path = SettableFeatureFinderParameters().networkFilePath;
    if (chargeDeterminator.init(path).hasError() || offsetDeterminator.init(path).hasError()) {
        std::fputs("The networks cannot be loaded\n", stderr);
        return 1;
    }
    SliceReport slices;
    SceneReport runs;
    SceneReport frames;
    for (std::uint64_t number = 0; number < sceneCount; ++number) {
        const training::HillScene scene = training::drawScene(kHeldOutSeed, number);
        training::peelByTruth(scene, 0.0, [&](const training::Example& example) {
            Answers answers{};
            answers.charge = chargeDeterminator.determineCharge(example.slice);
            if (example.charge > 0) {
                answers.offset = offsetDeterminator.determineMonoisotopeOffset(
                    example.slice, example.mz, example.charge);
                answers.baseline = bestCosineMatch(example.slice, example.mz);
                answers.baselineOffset =
                    bestCosineMatch(example.slice, example.mz, example.charge).offset;
            }
            slices.add(example, answers);
        });
        if (scene.kind == training::SceneKind::Run) {
            runs.add(scene);
        } else if (scene.kind == training::SceneKind::Frame) {
            frames.add(scene);
        }
    }
    slices.print();
    std::puts("\nClustering of whole scenes:");
    runs.print("runs");
    frames.print("frames");
    return 0;
}

} // namespace

} // namespace zel::bench

int main(int argc, char** argv)
{
    return zel::bench::run(argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 100);
}
