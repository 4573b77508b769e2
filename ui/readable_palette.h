#pragma once

#include <QPalette>

// Returns the palette with the text colour for links whose own colour has too little contrast to the window: dark
// desktops often keep the dark blue that suits a white background. Links stay recognizable by their underline.
[[nodiscard]] QPalette withReadableLinks(const QPalette& palette);
