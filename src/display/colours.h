// The screen's colours: channels, annotation colour names and the fixed colours of the frame,
// panel, spectrum, cursors and markers.
#ifndef QUARVELO_DISPLAY_COLOURS_H_
#define QUARVELO_DISPLAY_COLOURS_H_

#include <QColor>
#include <string_view>

namespace quarvelo::display {

inline const QColor kGraticuleColour{64, 64, 64};
inline const QColor kOutlineColour{255, 255, 255};
inline const QColor kTitleFillColour{0, 0, 192};
inline const QColor kHeaderFillColour{128, 128, 128};
inline const QColor kPanelOutlineColour{192, 192, 192};
inline const QColor kMarkerColour{255, 0, 0};
inline const QColor kShownRangeColour{255, 128, 0};
inline const QColor kSpectrumColour{255, 192, 255};
inline const QColor kMathColour{255, 192, 255};
inline const QColor kLeftCursorColour{255, 128, 0};
inline const QColor kRightCursorColour{255, 192, 128};

// Yellow, green, cyan, red for channels 1..4; black for any other number.
QColor ChannelColour(int channel);
// The oscilloscope's annotation colour mnemonics ("CH1".."CH4", "DIG", "MATH", "REF", "MARK",
// "WHIT", "RED"); black for anything else.
QColor ColourByName(std::string_view name);

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_COLOURS_H_
