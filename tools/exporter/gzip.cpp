// Texts that many answers share, compressed once and not for each of them.
#include "tools/exporter/gzip.h"

#include <zlib.h>

#include <memory>
#include <new>

namespace kova_exporter {
namespace {

const Bytef* bytes_of(std::string_view text) {
  return reinterpret_cast<const Bytef*>(text.data());
}

void append_little_endian(std::string& file, size_t number, int bytes) {
  for (int i = 0; i < bytes; ++i) {
    file += static_cast<char>(number >> (8 * i) & 0xFF);
  }
}

// As deflate blocks without compression; `last` if nothing comes after them.
void append_stored(std::string& file, std::string_view text, bool last) {
  constexpr size_t kLongestBlock = 0xFFFF;
  do {
    const std::string_view block = text.substr(0, kLongestBlock);
    text.remove_prefix(block.size());
    file += last && text.empty() ? '\1' : '\0';
    append_little_endian(file, block.size(), 2);
    append_little_endian(file, ~block.size(), 2);
    file += block;
  } while (!text.empty());
}

}  // namespace

DeflatedText deflated(std::string_view text) {
  constexpr int kRawDeflate = -MAX_WBITS;
  constexpr int kMemoryLevel = 8;  // the library's own default
  z_stream stream{};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kRawDeflate, kMemoryLevel,
                   Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
  const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, &deflateEnd);
  stream.next_in = const_cast<Bytef*>(bytes_of(text));  // which the library only reads
  stream.avail_in = static_cast<uInt>(text.size());
  DeflatedText result{.blocks = "",
                      .crc = static_cast<uint32_t>(crc32_z(0, bytes_of(text), text.size())),
                      .size = text.size()};
  do {
    constexpr size_t kPiece = 16 * 1024;
    const size_t before = result.blocks.size();
    result.blocks.resize(before + kPiece);
    stream.next_out = reinterpret_cast<Bytef*>(result.blocks.data() + before);
    stream.avail_out = kPiece;
    (void)deflate(&stream, Z_SYNC_FLUSH);
    result.blocks.resize(before + kPiece - stream.avail_out);
  } while (stream.avail_out == 0);
  result.blocks.shrink_to_fit();
  return result;
}

std::string gzip_file(std::string_view head, const DeflatedText& text, std::string_view tail) {
  // Deflate, no flags, no time, no hints, an unknown system.
  constexpr std::string_view kHeader("\x1F\x8B\x08\0\0\0\0\0\0\xFF", 10);
  constexpr size_t kMostBesides = 64;  // blocks' headers and the checksum
  std::string file;
  file.reserve(kHeader.size() + head.size() + text.blocks.size() + tail.size() + kMostBesides);
  file += kHeader;
  append_stored(file, head, false);
  file += text.blocks;
  append_stored(file, tail, true);
  uLong crc = crc32_z(0, bytes_of(head), head.size());
  crc = crc32_combine(crc, text.crc, static_cast<z_off_t>(text.size));
  crc = crc32_z(crc, bytes_of(tail), tail.size());
  append_little_endian(file, crc, 4);
  append_little_endian(file, head.size() + text.size + tail.size(), 4);
  return file;
}

const DeflatedText& SharedText::compressed() {
  if (!compressed_) {
    compressed_ = deflated(plain_);
  }
  return *compressed_;
}

}  // namespace kova_exporter
