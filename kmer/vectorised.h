// Functions of plain loops that gcc makes vector instructions of. They are compiled twice, and the
// processor's form, with registers of 32 bytes or not, is chosen when the program starts; both
// give the same.
#pragma once

#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define VELK_VECTORISED [[gnu::target_clones("avx2", "default")]]
#else
#define VELK_VECTORISED
#endif
