#include "tests/support/files.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <zlib.h>

#include <fstream>
#include <iterator>

namespace velk::test {

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "velk-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  folder_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::string TemporaryFolder::write(const std::string& name, const std::string& text) const {
  std::ofstream(path(name), std::ios::binary) << text;
  return path(name);
}

std::string TemporaryFolder::writeGzip(const std::string& name, const std::string& text) const {
  return write(name, gzipped(text));
}

std::string contentOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << file;
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string gzipped(const std::string& text) {
  z_stream stream{};
  deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, text.size()) + 32, '\0');
  std::string input = text;
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(packed.size() - stream.avail_out);
  deflateEnd(&stream);
  return packed;
}

}  // namespace velk::test
