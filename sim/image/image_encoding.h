// The screen picture in the instrument's transfer formats: 8-bit palette BMP, 24-bit BMP and
// PNG, in colour or grey.
#ifndef QUARVELO_SIM_IMAGE_IMAGE_ENCODING_H_
#define QUARVELO_SIM_IMAGE_IMAGE_ENCODING_H_

#include <string>

#include "sim/image/screen_drawing.h"

namespace quarvelo::sim {

enum class ImageFormat { kBmp24, kBmp8, kPng };

// The file's bytes.
std::string EncodeImage(const IndexedImage& image, ImageFormat format, bool gray);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_IMAGE_IMAGE_ENCODING_H_
