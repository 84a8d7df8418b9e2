#pragma once

/// Marks what zel_algo exports; everything else is hidden. Written before a function or a
/// variable's declaration, and between `class` and the name. A standard attribute, so that it can
/// stand beside [[nodiscard]].
#define ZEL_EXPORT [[gnu::visibility("default")]]
