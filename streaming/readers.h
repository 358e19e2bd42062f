// The twelve readers: each streams one read file, or one pair of mate files, through the buffer.
//
// FindReadsInGaps takes the read buffer, calls one reader and keeps the buffer for the next file. A
// reader fills the buffer with the sequence lines, hands every full batch and the rest at the end
// to the workers (sendSignal(1)) and has the result written (OutputBuffer). Main thread only.
// streaming/lineSource.h says how the kinds differ at the end of a file, and what a plain and a
// gzip line are. Open failures of plain files end the run with status 1; damage in gzip files is
// reported, remembered (gzipDamageSeen) and the run goes on.
#pragma once

#include <string>

namespace velk {

void LoadSEfa(const std::string& readFileA, const std::string& readFileB);
void LoadSEfa_gz(const std::string& readFileA);
void LoadSEfq(const std::string& readFileA, const std::string& readFileB);
void LoadSEfq_gz(const std::string& readFileA);
void LoadPEfaPair(const std::string& readFileA);
void LoadPEfaPair_gz(const std::string& readFileA);
void LoadPEfa(const std::string& readFileA, const std::string& readFileB);
void LoadPEfa_gz(const std::string& readFileA, const std::string& readFileB);
void LoadPEfqPair(const std::string& readFileA);
void LoadPEfqPair_gz(const std::string& readFileA);
void LoadPEfq(const std::string& readFileA, const std::string& readFileB);
void LoadPEfq_gz(const std::string& readFileA, const std::string& readFileB);

}  // namespace velk
