#include "tests/driver/helpText.h"

#include <unistd.h>

namespace velk::test {
namespace {

// `text` as an extended regular expression that matches nothing else.
std::string literally(const std::string& text) {
  std::string pattern;
  for (const char letter : text) {
    if (std::string(".[](){}*+?|^$\\").find(letter) != std::string::npos) pattern += '\\';
    pattern += letter;
  }
  return pattern;
}

}  // namespace

std::string helpPattern(const HelpValues& values) {
  const std::string date = "[A-Z][a-z][a-z] [ 1-3][0-9] [0-9][0-9][0-9][0-9]";
  const std::string time = "[0-9][0-9]:[0-9][0-9]:[0-9][0-9]";
  std::string options =
      "Author:\tthe velk developers\n"
      "Contact:\tsee README.md\n"
      "\t-l\t<str>\t\tlib file \n"
      "\t-c\t<str>\t\tcontig file in fasta\n"
      "\t-s\t<str>\t\tscaffold file in fasta\n"
      "\t-o\t<str>\t\toutput the reads fall in gaps \n";
  const auto add = [&](const char* text, const std::string& value) {
    options.append(text).append(value).append("\n");
  };
  add("\t-O\t<float>\t\toverlap ratio cut ratio of long reads with contig edge, default=",
      values.overRatio);
  add("\t-M <float>\t\tmap ratio cut ratio of reads to contig, default =", values.mapCut);
  add("\t-C <int>\t\tcut contig edge length =", values.cutEdge);
  add("\t-k\t<int>\t\tkmer length(<=63), default=", values.kmer);
  add("\t-t\t<int>\t\tthread number, default=", values.threads);
  add("\t-r\t<int>\t\tmax PE read length, default=", values.readLength);
  add("\t-m\t<int>\t\tinitialize size of hash table, default=", values.initSize);
  add("\t-L\t<int>\t\tcontig length cutoff, default=", values.contigLength);
  add("\t-f\t<float>\t\tLoad factor ", values.loadFactor);
  options +=
      "\t-h\t\t\tthis help\n\n"
      "Example:\n"
      "velk -l reads.lib -s scaffolds.fa -m seqlength*1/LoadFactor -o found.fa 2>velk.log\n"
      "velk -l reads.lib -c contigs.fa -m seqlength*1/LoadFactor -o found.fa 2>velk.log\n"
      "Attention:\n"
      "Please do not set -s and -c at the same time, or else, velk will only load and use "
      "scaffold.\n"
      "\n\n";
  return literally("Usage:\t\tVelk(VELK) [option]\nVersion:\tvelk1.13\nCompile Date:\t")
      .append(date)
      .append("\t")
      .append(time)
      .append(literally("\n" + options));
}

void sendOutputToError() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

}  // namespace velk::test
