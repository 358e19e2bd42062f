// Kinds of findings in the assembly.
#pragma once

#include <array>

#include "check/kind.h"

namespace velk::check {

inline constexpr auto kKindsAssembly = std::to_array<Kind>({
    {"assembly-unreadable", Level::kError, "the assembly cannot be opened or read", "velk stops",
     "check the name and the permissions"},
    {"assembly-refused", Level::kError, "velk refuses the assembly", "velk stops with this message",
     "see the message", "needs no fix where it is for the headers"},
    {"assembly-compressed", Level::kError, "the assembly is compressed",
     "velk reads the compressed bytes as text", "decompress it",
     "needs no fix for gzip, bzip2, xz and zstd"},
    {"id-cut", Level::kWarning, "a header whose id is not what stands in it",
     "velk drops the first nine characters of a header, or two when it holds a C; see text",
     "write >scaffold and the id in all headers, without a capital C behind", kNoFix},
    {"id-equal", Level::kWarning, "scaffolds with equal ids",
     "the output does not distinguish them", "give each scaffold an id of its own",
     "needs no fix where the names differ up to their first blanks"},
    {"id-scattered", Level::kError, "the contigs of a scaffold come in several blocks",
     "a later block replaces the contigs of an earlier one",
     "keep the contigs of a scaffold together, and ids apart"},
    {"id-empty", Level::kWarning, "a header without an id", "the scaffold has an empty name",
     "write >scaffold and the id", kNoFix},
    {"id-underscore", Level::kWarning, "a scaffold id with _",
     "read back with -c, ids from .contig are cut at the _, so scaffolds fall together",
     "rename the scaffolds", kNoFix},
    {"id-tab", Level::kWarning, "a scaffold id with a tab",
     "the tab stands in the output, whose fields are separated by tabs", "keep tabs out of headers",
     kNoFix},
    {"id-carriage-return", Level::kWarning, "a scaffold id that ends with a carriage return",
     "it stands in the output", "convert the file to plain newlines", kNoFix},
    {"scaffold-empty", Level::kError, "a scaffold without sequence",
     "the header behind it is taken as sequence and its id is lost",
     "remove scaffolds without sequence", kNoFix},
    {"scaffold-all-n", Level::kWarning, "a scaffold without bases other than N",
     "the gap report gives it 4294967295 gaps", "remove the scaffold", kNoFix},
    {"contig-lower-case", Level::kError, "contigs with lower-case bases",
     "no upper-case base of a read agrees with them, so reads there are lost",
     "write the assembly in upper case", kNoFix},
    {"contig-carriage-return", Level::kError, "carriage returns in the sequence",
     "they count as bases that never agree, and shift all positions",
     "convert the file to plain newlines", kNoFix},
    {"contig-letters", Level::kNote, "contigs with letters other than A, C, G, T and N",
     "these agree with no base of a read", "nothing"},
    {"no-gaps", Level::kError, "the assembly has no gaps", "the run ends well and finds nothing",
     "give scaffolds with N in their gaps"},
    {"gap-placeholder", Level::kWarning, "many gaps have one and the same length",
     "it seems to stand for an unknown length, but velk takes it as it is: mates beyond it are "
     "lost",
     "give the gaps estimated lengths", "needs no fix: --placeholder names such a length"},
    {"gap-negative", Level::kNote, "a contig file with negative gap lengths",
     "velk takes them as they stand; hardly any mate fits into such a gap", "nothing"},
    {"nothing-indexed", Level::kError, "no contig has a k-mer in the index",
     "the run ends well and finds nothing", "give a smaller -L or -k"},
});

}  // namespace velk::check
