#include "streaming/inflater.h"

#include "streaming/zlibInflater.h"
#ifdef VELK_ISAL
#include "streaming/isalInflater.h"
#endif

namespace velk {

#ifdef VELK_ISAL

InflateLibrary inflateLibrary = InflateLibrary::kIsal;

std::vector<InflateLibrary> inflateLibraries() {
  return {InflateLibrary::kZlib, InflateLibrary::kIsal};
}

std::unique_ptr<Inflater> makeInflater() {
  if (inflateLibrary == InflateLibrary::kIsal) return std::make_unique<IsalInflater>();
  return std::make_unique<ZlibInflater>();
}

#else

InflateLibrary inflateLibrary = InflateLibrary::kZlib;

std::vector<InflateLibrary> inflateLibraries() {
  return {InflateLibrary::kZlib};
}

std::unique_ptr<Inflater> makeInflater() {
  return std::make_unique<ZlibInflater>();
}

#endif

}  // namespace velk
