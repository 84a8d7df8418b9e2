"""Trains the charge and the offset network on simulated slices and writes them into one file.

    train.py PATTERNS OUTPUT

PATTERNS comes from zel_training_patterns. Same input, same file, byte for byte: one thread, a fixed
seed, no date. docs/file-formats.md describes the output.
"""

import hashlib
import json
import struct
import sys

import numpy
import torch

SEED = 1
HELD_OUT = 0.1
BATCH = 512
PEAK_LEARNING_RATE = 4e-3
RELU, LINEAR = 1, 0


def read_patterns(path):
    with open(path, "rb") as file:
        header_bytes = struct.unpack("<I", file.read(4))[0]
        header = json.loads(file.read(header_bytes))
    inputs = header["chargeInputs"], header["offsetInputs"]
    record = numpy.dtype([("charge", "<i2"), ("offset", "<i2"),
                          ("chargeInputs", "<f2", inputs[0]), ("offsetInputs", "<f2", inputs[1])])
    return header, numpy.memmap(path, record, "r", offset=4 + header_bytes)


def make_network(sizes):
    layers = []
    for inputs, outputs in zip(sizes, sizes[1:]):
        layers += [torch.nn.Linear(inputs, outputs), torch.nn.ReLU()]
    return torch.nn.Sequential(*layers[:-1])


def batch(records, field, rows):
    return torch.from_numpy(records[field][rows].astype(numpy.float32))


def accuracy(network, records, inputs, answer, rows):
    with torch.no_grad():
        right = sum(int((network(batch(records, inputs, part)).argmax(1).numpy()
                         == records[answer][part]).sum())
                    for part in numpy.array_split(rows, max(1, len(rows) // 4096)))
    return round(right / len(rows), 4)


def train(name, records, inputs, answer, rows, hidden, outputs, epochs):
    """The network and its accuracy on the last tenth of the rows, which it never saw."""
    torch.manual_seed(SEED)
    held_out = rows[int(len(rows) * (1 - HELD_OUT)):]
    rows = rows[:int(len(rows) * (1 - HELD_OUT))]
    network = make_network([records[inputs].shape[1], *hidden, outputs])
    optimizer = torch.optim.Adam(network.parameters())
    steps = len(rows) // BATCH
    schedule = torch.optim.lr_scheduler.OneCycleLR(optimizer, PEAK_LEARNING_RATE, epochs * steps)
    for epoch in range(epochs):
        order = rows[torch.randperm(len(rows)).numpy()]
        for step in range(steps):
            part = numpy.sort(order[step * BATCH:(step + 1) * BATCH])
            answers = torch.from_numpy(records[answer][part].astype(numpy.int64))
            loss = torch.nn.functional.cross_entropy(network(batch(records, inputs, part)), answers)
            optimizer.zero_grad()
            loss.backward()
            optimizer.step()
            schedule.step()
        print(name, "epoch", epoch + 1, "of", epochs, "held out:",
              accuracy(network, records, inputs, answer, held_out), flush=True)
    return network, accuracy(network, records, inputs, answer, held_out)


def layer_bytes(network):
    linear = [layer for layer in network if isinstance(layer, torch.nn.Linear)]
    for layer in linear:
        activation = LINEAR if layer is linear[-1] else RELU
        yield struct.pack("<III", layer.in_features, layer.out_features, activation)
        yield layer.weight.detach().numpy().astype("<f4").tobytes()
        yield layer.bias.detach().numpy().astype("<f4").tobytes()


def write_file(path, header, networks):
    text = json.dumps(header, sort_keys=True, indent=1).encode()
    content = b"ZELNET\r\n" + struct.pack("<II", 1, len(text)) + text
    content += b"".join(part for network in networks for part in layer_bytes(network))
    with open(path, "wb") as file:
        file.write(content + hashlib.sha256(content).digest())


def main(patterns_path, output_path):
    torch.set_num_threads(1)
    torch.use_deterministic_algorithms(True)
    patterns, records = read_patterns(patterns_path)
    every = numpy.arange(len(records))
    charge, charge_accuracy = train(
        "charge", records, "chargeInputs", "charge", every, [96, 32], patterns["chargeOutputs"], 10)
    clusters = every[records["charge"] > 0]
    offset, offset_accuracy = train(
        "offset", records, "offsetInputs", "offset", clusters, [96, 32],
        patterns["offsetOutputs"], 12)
    write_file(output_path, {
        "layout": patterns["layout"],
        "networks": [
            {"name": "charge", "layers": 3, "accuracy": charge_accuracy},
            {"name": "offset", "layers": 3, "accuracy": offset_accuracy}],
        "training": {"examples": len(records), "patternSeed": patterns["seed"], "seed": SEED},
    }, [charge, offset])


if __name__ == "__main__":
    main(*sys.argv[1:])
