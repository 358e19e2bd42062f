// Makes read(), inflate(), inflateInit2() and pthread_create() of the test program fail on demand.
#pragma once

namespace velk::test {

/// From now on the read() after the next `n` ones fails with `error`, and no other.
void failReadAfter(int n, int error);

/// From now on inflate() does nothing but return `result`; Z_OK: it inflates again.
void failInflate(int result);

/// Whether inflateInit2() fails with Z_MEM_ERROR from now on.
void failInflateInit(bool fails);

/// Whether pthread_create() fails with EAGAIN from now on.
void failThreads(bool fails);

}  // namespace velk::test
