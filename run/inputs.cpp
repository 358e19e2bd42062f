#include "run/inputs.h"

#include <algorithm>

namespace velk::run {
namespace {

constexpr std::size_t kSampleEntries = 20000;
constexpr std::size_t kSampleBytes = 32 << 20;

std::size_t longestOf(const std::vector<reads::KeptRead>& reads) {
  std::size_t longest = 0;
  for (const reads::KeptRead& read : reads) longest = std::max(longest, read.bases.size());
  return longest;
}

}  // namespace

Inputs::Inputs(const std::vector<Library>& libraries, int threads) {
  const auto helpers = threads > 1 ? reads::Helpers::kInflateAhead : reads::Helpers::kNone;
  for (uint32_t n = 0; n < libraries.size(); ++n) {
    for (const reads::InputFiles& files : libraries[n].inputs) {
      const auto number = static_cast<uint32_t>(inputs_.size());
      auto input = std::make_unique<reads::ReadInput>(files, number, helpers);
      std::string failure;
      try {
        input->takeSample(kSampleEntries, kSampleBytes);
      } catch (const reads::InputError& error) {
        failure = error.what();
      }
      inputs_.push_back({n, std::move(input), failure});
    }
  }
}

std::vector<SearchInput> Inputs::toSearch() const {
  std::vector<SearchInput> found;
  for (const OpenInput& input : inputs_) found.push_back({input.reads.get(), input.library});
  return found;
}

std::size_t Inputs::longestPairedRead() const {
  std::size_t longest = 0;
  for (const OpenInput& input : inputs_) {
    if (!input.reads->files().arePairs()) continue;
    longest =
        std::max({longest, longestOf(input.sample().first), longestOf(input.sample().second)});
  }
  return longest;
}

uint64_t Inputs::bytes() const {
  uint64_t sum = 0;
  for (const OpenInput& input : inputs_) {
    if (input.reads->bytes() == 0) return 0;
    sum += input.reads->bytes();
  }
  return sum;
}

}  // namespace velk::run
