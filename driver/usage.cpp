// The help text.
#include <sstream>

#include "driver/fatal.h"
#include "driver/velk.h"

namespace velk {
namespace {

constexpr const char* PROGRAM = "Velk(VELK)";
constexpr const char* VERSION = "velk1.13";
constexpr const char* AUTHOR = "the velk developers";
constexpr const char* CONTACT = "see README.md";

}  // namespace

void usage() {
  // The uneven blanks of the -M and -C lines and the trailing ones of -l and -o are part of the
  // text.
  std::ostringstream text;
  text.exceptions(std::ios::badbit);  // lack of memory shall not cut the text
  text << "Usage:\t\t" << PROGRAM << " [option]\n"
       << "Version:\t" << VERSION << "\n"
       << "Compile Date:\t" << __DATE__ << "\t" << __TIME__ << "\n"
       << "Author:\t" << AUTHOR << "\n"
       << "Contact:\t" << CONTACT << "\n"
       << "\t-l\t<str>\t\tlib file \n"
       << "\t-c\t<str>\t\tcontig file in fasta\n"
       << "\t-s\t<str>\t\tscaffold file in fasta\n"
       << "\t-o\t<str>\t\toutput the reads fall in gaps \n"
       << "\t-O\t<float>\t\toverlap ratio cut ratio of long reads with contig edge, default="
       << OverRatio << "\n"
       << "\t-M <float>\t\tmap ratio cut ratio of reads to contig, default =" << mapCut << "\n"
       << "\t-C <int>\t\tcut contig edge length =" << CuttEdge << "\n"
       << "\t-k\t<int>\t\tkmer length(<=63), default=" << Kmer << "\n"
       << "\t-t\t<int>\t\tthread number, default=" << thread_num << "\n"
       << "\t-r\t<int>\t\tmax PE read length, default=" << readLen << "\n"
       << "\t-m\t<int>\t\tinitialize size of hash table, default=" << initSize << "\n"
       << "\t-L\t<int>\t\tcontig length cutoff, default=" << CONTIGLEN << "\n"
       << "\t-f\t<float>\t\tLoad factor " << LoadFactor << "\n"
       << "\t-h\t\t\tthis help\n\n"
       << "Example:\n"
       << "velk -l reads.lib -s scaffolds.fa -m seqlength*1/LoadFactor -o found.fa 2>velk.log\n"
       << "velk -l reads.lib -c contigs.fa -m seqlength*1/LoadFactor -o found.fa 2>velk.log\n"
       << "Attention:\n"
       << "Please do not set -s and -c at the same time, or else, velk will only load and use "
          "scaffold.\n"
       << "\n\n";
  endOnOutput(kUserError, text.str());
}

}  // namespace velk
