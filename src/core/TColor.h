#pragma once

#include <cstdint>

// A colour as the settings file and the report code hold it: red in the low byte,
// then green, then blue (pure red is 255, pure blue is 16711680). A negative value
// names a system colour whose low byte is the system colour index.
using TColor = std::int32_t;

// A colour split in its three bytes, in the order blue, green, red.
struct tyRGBTriple
{
  std::uint8_t rgbtBlue = 0;
  std::uint8_t rgbtGreen = 0;
  std::uint8_t rgbtRed = 0;
};

inline constexpr TColor clBlack = 0x000000;
inline constexpr TColor clWhite = 0xFFFFFF;
inline constexpr TColor clRed = 0x0000FF;
inline constexpr TColor clLime = 0x00FF00;
inline constexpr TColor clBlue = 0xFF0000;
inline constexpr TColor clYellow = 0x00FFFF;

// System colours: the marker in the high byte, the index in the low byte.
inline constexpr TColor clSystemColor = static_cast<TColor>(0xFF000000u);
inline constexpr TColor clWindow = clSystemColor | 5;
inline constexpr TColor clWindowText = clSystemColor | 8;
inline constexpr TColor clHighlight = clSystemColor | 13;
inline constexpr TColor clHighlightText = clSystemColor | 14;
inline constexpr TColor clBtnFace = clSystemColor | 15;
inline constexpr TColor clGrayText = clSystemColor | 17;
inline constexpr TColor clInfoBk = clSystemColor | 24;

// The red-green-blue value of a colour: a system colour is looked up in a fixed
// table of the usual desktop defaults (an unknown index gives black); any other
// value is returned as it is.
TColor ColorToRGB(TColor color);
