// The descriptors of standard input, output and error, which a program may be started without.
//
// Every program calls openStandardDescriptors() before anything else. Otherwise the first file that
// it opens gets the number of a closed one, and messages land in that file.
#pragma once

namespace velk {

/// Opens each of the descriptors 0 to 2 that is closed on /dev/null, so that it stays unreadable or
/// unwritable as a closed one is. Exits with status 1 after "[ERROR]: can't open /dev/null: REASON"
/// when that fails.
void openStandardDescriptors();

}  // namespace velk
