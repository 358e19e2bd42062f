// MD5 sums, part by part.
#pragma once

#include <string>
#include <string_view>

struct hts_md5_context;

namespace velk::run {

class Md5 {
 public:
  /// Throws std::bad_alloc.
  Md5();
  ~Md5();
  Md5(const Md5&) = delete;
  Md5& operator=(const Md5&) = delete;

  void add(std::string_view bytes);

  /// The sum of all that was added, in hexadecimal digits. Once, at the end.
  std::string sum();

 private:
  hts_md5_context* context_;
};

/// The sum of a text.
std::string md5OfText(std::string_view text);

}  // namespace velk::run
