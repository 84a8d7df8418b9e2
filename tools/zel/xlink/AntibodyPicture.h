#pragma once

#include "tools/zel/xlink/AntibodyChains.h"
#include "xlink/AntibodyXlinkPredictor.h"

#include <QByteArray>
#include <QList>

namespace zel::tool {

/// A page of HTML with one drawing (inline SVG, no scripts): the four chains as bars, light ones
/// outside, their cysteines as ticks, links within a chain as arcs and those between chains as
/// lines. What the mouse rests on says its positions, from 1.
QByteArray antibodyPage(const AntibodyChains& chains,
                        const QList<xlink::AntibodyXlinkPredictor::Link>& links);

} // namespace zel::tool
