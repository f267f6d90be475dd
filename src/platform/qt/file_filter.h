// File-dialog filters are written the classic way, "description|pattern|description|pattern"
// ("BMP Files(*.bmp)|*.bmp"); Qt wants "description (patterns);;...".
#ifndef QUARVELO_PLATFORM_QT_FILE_FILTER_H_
#define QUARVELO_PLATFORM_QT_FILE_FILTER_H_

#include <QString>
#include <string_view>

namespace quarvelo::qt {

// A filter without "|" is taken to be in Qt's form already and passed on unchanged.
QString QtFileFilter(std::string_view filter);

}  // namespace quarvelo::qt

#endif  // QUARVELO_PLATFORM_QT_FILE_FILTER_H_
