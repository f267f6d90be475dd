#include "display/colours.h"

namespace quarvelo::display {

QColor ChannelColour(int channel) {
  switch (channel) {
    case 1:
      return {255, 255, 0};
    case 2:
      return {0, 255, 0};
    case 3:
      return {0, 255, 255};
    case 4:
      return {255, 0, 0};
    default:
      return {0, 0, 0};
  }
}

QColor ColourByName(std::string_view name) {
  if (name.size() == 3 && name.substr(0, 2) == "CH" && name[2] >= '1' && name[2] <= '4')
    return ChannelColour(name[2] - '0');
  if (name == "DIG") return {128, 255, 255};
  if (name == "MATH") return kMathColour;
  if (name == "REF") return {192, 64, 0};
  if (name == "MARK") return {255, 128, 0};
  if (name == "WHIT") return {255, 255, 255};
  if (name == "RED") return {255, 0, 0};
  return {0, 0, 0};
}

}  // namespace quarvelo::display
