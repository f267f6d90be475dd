#include "sim/image/image_encoding.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace quarvelo::sim {
namespace {

void PutLe16(std::string& out, std::uint16_t value) {
  out.push_back(static_cast<char>(value & 0xFF));
  out.push_back(static_cast<char>(value >> 8));
}

void PutLe32(std::string& out, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

// BITMAPFILEHEADER + BITMAPINFOHEADER; rows are stored bottom-up, padded to 4 bytes.
std::string Bmp(const IndexedImage& image, bool gray, int bits) {
  const std::array<Rgb, 256> palette = ScreenPalette(gray, image.ink_saver);
  const int bytes_per_pixel = bits / 8;
  const std::uint32_t row_bytes = (image.width * bytes_per_pixel + 3) & ~3u;
  const std::uint32_t palette_bytes = bits == 8 ? 256 * 4 : 0;
  const std::uint32_t offset = 14 + 40 + palette_bytes;
  const std::uint32_t size = offset + row_bytes * image.height;
  std::string out;
  out.reserve(size);
  out += "BM";
  PutLe32(out, size);
  PutLe32(out, 0);
  PutLe32(out, offset);
  PutLe32(out, 40);
  PutLe32(out, image.width);
  PutLe32(out, image.height);
  PutLe16(out, 1);
  PutLe16(out, static_cast<std::uint16_t>(bits));
  PutLe32(out, 0);  // no compression
  PutLe32(out, row_bytes * image.height);
  PutLe32(out, 3780);  // 96 dpi
  PutLe32(out, 3780);
  PutLe32(out, bits == 8 ? 256 : 0);
  PutLe32(out, 0);
  if (bits == 8) {
    for (const Rgb& colour : palette) {
      out.push_back(static_cast<char>(colour.blue));
      out.push_back(static_cast<char>(colour.green));
      out.push_back(static_cast<char>(colour.red));
      out.push_back(0);
    }
  }
  // The rows are written in place: a byte at a time through push_back made a screen image the
  // slowest reply the simulator gives.
  const std::size_t pixels_at = out.size();
  out.resize(size, '\0');
  char* row_out = out.data() + pixels_at;
  for (int y = image.height - 1; y >= 0; --y, row_out += row_bytes) {
    const std::uint8_t* row = &image.pixels[static_cast<std::size_t>(y) * image.width];
    if (bits == 8) {
      std::copy_n(row, image.width, reinterpret_cast<std::uint8_t*>(row_out));
      continue;
    }
    char* pixel = row_out;
    for (int x = 0; x < image.width; ++x) {
      const Rgb& colour = palette[row[x]];
      *pixel++ = static_cast<char>(colour.blue);
      *pixel++ = static_cast<char>(colour.green);
      *pixel++ = static_cast<char>(colour.red);
    }
  }
  return out;
}

std::string Png(const IndexedImage& image, bool gray) {
  const std::array<Rgb, 256> palette = ScreenPalette(gray, image.ink_saver);
  QImage picture(image.width, image.height, QImage::Format_Indexed8);
  QList<QRgb> table;
  for (const Rgb& colour : palette) table.push_back(qRgb(colour.red, colour.green, colour.blue));
  picture.setColorTable(table);
  for (int y = 0; y < image.height; ++y) {
    std::copy_n(&image.pixels[static_cast<size_t>(y) * image.width], image.width,
                picture.scanLine(y));
  }
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  picture.save(&buffer, "PNG");
  return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

}  // namespace

std::string EncodeImage(const IndexedImage& image, ImageFormat format, bool gray) {
  switch (format) {
    case ImageFormat::kBmp24:
      return Bmp(image, gray, 24);
    case ImageFormat::kBmp8:
      return Bmp(image, gray, 8);
    case ImageFormat::kPng:
      return Png(image, gray);
  }
  return {};
}

}  // namespace quarvelo::sim
