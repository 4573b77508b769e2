// Colours that can be read on what they stand on, whatever palette the desktop has.
#pragma once

#include <QPalette>

// The palette, with the colour of links replaced by that of texts where it hardly differs from the window's: desktops
// that are dark often leave links at the dark blue that was made for white. A link stays underlined.
[[nodiscard]] QPalette withReadableLinks(const QPalette& palette);
