// What becomes of damaged gzip files: a message when the damage is met, a failed run at its end.
// Main thread only.
#pragma once

#include <string>

namespace velk {

/// Reports "[ERROR]: damaged gzip file: FILE: REASON" and remembers it.
void reportGzipDamage(const std::string& file, const std::string& reason);

/// Returns whether any damage was reported: the run must not end with status 0.
bool gzipDamageSeen();

/// Forgets all damage. For a process that makes many runs: between two of them.
void forgetGzipDamage();

}  // namespace velk
