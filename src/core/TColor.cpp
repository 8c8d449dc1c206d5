#include "TColor.h"

#include <array>

namespace {
// Usual desktop values of the system colours, by index, written 0xRRGGBB for
// reading; converted to the red-in-low-byte order on look-up.
constexpr std::array<std::uint32_t, 31> CSystemColors = {
    0xC8C8C8, // 0 scroll bar
    0x000000, // 1 desktop background
    0x99B4D1, // 2 active caption
    0xBFCDDB, // 3 inactive caption
    0xF0F0F0, // 4 menu
    0xFFFFFF, // 5 window
    0x646464, // 6 window frame
    0x000000, // 7 menu text
    0x000000, // 8 window text
    0x000000, // 9 caption text
    0xB4B4B4, // 10 active border
    0xF4F7FC, // 11 inactive border
    0xABABAB, // 12 application workspace
    0x0078D7, // 13 highlight
    0xFFFFFF, // 14 highlight text
    0xF0F0F0, // 15 button face
    0xA0A0A0, // 16 button shadow
    0x6D6D6D, // 17 grey text
    0x000000, // 18 button text
    0x000000, // 19 inactive caption text
    0xFFFFFF, // 20 button highlight
    0x696969, // 21 3D dark shadow
    0xE3E3E3, // 22 3D light
    0x000000, // 23 tooltip text
    0xFFFFE1, // 24 tooltip background
    0x000000, // 25 unused
    0x0066CC, // 26 hot-tracked item
    0xB9D1EA, // 27 active caption gradient
    0xD7E4F2, // 28 inactive caption gradient
    0x3399FF, // 29 menu highlight
    0xF0F0F0, // 30 menu bar
};
} // namespace

TColor ColorToRGB(TColor color)
{
  if (color >= 0)
    return color;
  const std::size_t index = static_cast<std::uint32_t>(color) & 0xFFu;
  if (index >= CSystemColors.size())
    return clBlack;
  const std::uint32_t rgb = CSystemColors[index];
  return static_cast<TColor>(((rgb >> 16) & 0xFF) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16));
}
