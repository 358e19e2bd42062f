// Files read in blocks, gzip files among them: signals that come in between, system calls and calls
// of zlib that fail, memory that zlib does not get.
#include "streaming/blockReader.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>
#include <zlib.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <new>
#include <thread>

#include "streaming/gzipInput.h"
#include "tests/streaming/gzipWays.h"
#include "tests/streaming/streamingTest.h"

namespace {

constexpr int kNever = -1;
int readsLeft = kNever;  // until one fails
int readError = 0;
int inflateResult = Z_OK;
bool failsInflateInit = false;
int threadsLeft = kNever;  // until all fail

}  // namespace

// The linker option --wrap sends the calls of the program to these functions, under these names.
extern "C" {
ssize_t __real_read(int descriptor, void* bytes, std::size_t count);
int __real_inflate(z_streamp stream, int flush);
int __real_inflateInit2_(z_streamp stream, int windowBits, const char* version, int streamSize);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument);
ssize_t __wrap_read(int descriptor, void* bytes, std::size_t count);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument);
int __wrap_inflate(z_streamp stream, int flush);
int __wrap_inflateInit2_(z_streamp stream, int windowBits, const char* version, int streamSize);

ssize_t __wrap_read(int descriptor, void* bytes, std::size_t count) {
  if (readsLeft == kNever || readsLeft-- != 0) return __real_read(descriptor, bytes, count);
  errno = readError;
  return -1;
}

int __wrap_inflate(z_streamp stream, int flush) {
  return inflateResult == Z_OK ? __real_inflate(stream, flush) : inflateResult;
}

int __wrap_inflateInit2_(z_streamp stream, int windowBits, const char* version, int streamSize) {
  if (failsInflateInit) return Z_MEM_ERROR;
  return __real_inflateInit2_(stream, windowBits, version, streamSize);
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument) {
  if (threadsLeft == 0) return EAGAIN;
  if (threadsLeft != kNever) --threadsLeft;
  return __real_pthread_create(thread, attributes, routine, argument);
}
}

namespace velk::test {
namespace {

// From now on the read() after the next `n` ones fails with `error`, and no other.
void failReadAfter(int n, int error) {
  readsLeft = n;
  readError = error;
}

// From now on inflate() does nothing but return `result`; Z_OK: it inflates again.
void failInflate(int result) {
  inflateResult = result;
}

// Whether inflateInit2() fails with Z_MEM_ERROR from now on.
void failInflateInit(bool fails) {
  failsInflateInit = fails;
}

// From now on every pthread_create() after the next `n` ones fails with EAGAIN; kNever: none does.
void failThreadsAfter(int n) {
  threadsLeft = n;
}

using BlockReaderTest = StreamingTest;

std::atomic<int> signalsSeen = 0;

// During its life a signal comes every few milliseconds and interrupts what the thread waits for.
class Interruptions {
 public:
  Interruptions() {
    struct sigaction action {};
    action.sa_handler = [](int) { ++signalsSeen; };
    sigaction(SIGALRM, &action, &savedAction_);
    const itimerval every{{0, 5000}, {0, 5000}};
    setitimer(ITIMER_REAL, &every, nullptr);
  }
  ~Interruptions() {
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &savedAction_, nullptr);
  }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;

  static void waitForSome() {
    for (const int before = signalsSeen; signalsSeen < before + 3;) usleep(1000);
  }

 private:
  struct sigaction savedAction_ {};
};

// A thread that makes `text` of the pipe `file`, and lets its reader wait for the other end and for
// the bytes while signals come.
std::thread slowWriter(const char* file, std::string text) {
  sigset_t alarm;
  sigset_t saved;
  sigemptyset(&alarm);
  sigaddset(&alarm, SIGALRM);
  pthread_sigmask(SIG_BLOCK, &alarm, &saved);
  std::thread writer([=] {
    Interruptions::waitForSome();
    const int descriptor = ::open(file, O_RDWR);  // does not wait for a reader that gave up
    Interruptions::waitForSome();
    EXPECT_EQ(write(descriptor, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(descriptor);
  });
  pthread_sigmask(SIG_SETMASK, &saved, nullptr);
  return writer;
}

TEST_F(BlockReaderTest, SignalsEndNeitherOpeningNorReading) {
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  const Interruptions interruptions;
  std::thread writer = slowWriter("pipe", "ACGT\n");
  BlockReader reader(100);
  EXPECT_TRUE(reader.open("pipe"));
  EXPECT_EQ(reader.next(), "ACGT\n");
  EXPECT_EQ(reader.next(), "");
  EXPECT_EQ(reader.error(), 0);
  writer.join();
}

TEST_F(BlockReaderTest, NothingFollowsAReadThatFailed) {
  write("file", "ACGTTGCA");
  BlockReader reader(4);
  ASSERT_TRUE(reader.open("file"));
  EXPECT_EQ(reader.next(), "ACGT");
  failReadAfter(0, EIO);
  EXPECT_EQ(reader.next(), "");
  EXPECT_EQ(reader.error(), EIO);
  EXPECT_EQ(reader.next(), "");
  EXPECT_EQ(reader.error(), EIO);
}

TEST_F(BlockReaderTest, NothingComesOfAFileThatIsNotOpen) {
  BlockReader reader(4);
  EXPECT_FALSE(reader.open("missing"));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(reader.next(), "");
  EXPECT_EQ(reader.error(), 0);
}

// Gzip files that cannot be read to their end, and memory that zlib does not get.

constexpr std::size_t kRawBlock = 131072;  // bytes that GzipInput reads at once
constexpr const char* kUnreadable = "Input/output error";

class GzipErrors : public GzipWayTest {
 protected:
  ~GzipErrors() override { failThreadsAfter(kNever); }

  // What there is of a file of which only the first `blocks` blocks can be read.
  static Inflated inflateBlocks(int blocks, const std::string& content) {
    failReadAfter(blocks, EIO);
    return inflateFile(content);
  }
};

INSTANTIATE_GZIP_WAYS(GzipErrors);

TEST_P(GzipErrors, UnreadableFromTheStart) {
  EXPECT_EQ(inflateBlocks(0, gzipped("ACGT\n")), (Inflated{"", kUnreadable}));
}

TEST_P(GzipErrors, UnreadableWithinAMember) {
  const std::string bytes = noise(3 * kRawBlock, 1);
  const std::string member = gzipped(bytes);
  const std::string expected = inflatedPart(member.substr(0, 2 * kRawBlock));
  ASSERT_GT(expected.size(), kRawBlock);
  const Inflated inflated = inflateBlocks(2, member);
  EXPECT_EQ(inflated.damage, kUnreadable);
  EXPECT_TRUE(inflated.bytes == expected);
}

TEST_P(GzipErrors, UnreadableBetweenMembers) {
  const std::string bytes = noise(kRawBlock - 300, 2);
  const Inflated inflated = inflateBlocks(1, memberOfSize(bytes, kRawBlock) + gzipped("ACGT\n"));
  EXPECT_EQ(inflated.damage, kUnreadable);
  EXPECT_TRUE(inflated.bytes == bytes);
}

TEST_P(GzipErrors, UnreadableInThePadding) {
  EXPECT_EQ(inflateBlocks(1, gzipped("ACGT\n") + std::string(2 * kRawBlock, '\0')),
            (Inflated{"ACGT\n", kUnreadable}));
}

TEST_P(GzipErrors, UnreadablePlainFile) {
  const std::string text = randomBases(2 * kRawBlock, 3);
  const Inflated inflated = inflateBlocks(1, text);
  EXPECT_EQ(inflated.damage, kUnreadable);
  EXPECT_TRUE(inflated.bytes == text.substr(0, kRawBlock));
}

TEST_P(GzipErrors, HelperThatCannotStart) {
  failThreadsAfter(0);
  const std::string bytes = noise(3 * kRawBlock, 4);
  EXPECT_TRUE(inflateFile(gzipped(bytes)) == (Inflated{bytes, ""}));
  EXPECT_EQ(inflateFile("\x1f\x8b"), (Inflated{"", "unexpected end of file"}));
}

// BGZF files, which several threads inflate together: without some of the threads, without memory,
// and with an error while members are read ahead of those being inflated.
class BgzfErrors : public GzipErrors {
 protected:
  BgzfErrors() {
    for (unsigned n = 0; n < 20; ++n) {
      const std::string part = randomBases(60000, n);
      file_ += bgzfMember(part);
      text_ += part;
    }
  }
  ~BgzfErrors() override { failInflateInit(false); }

  std::string file_;
  std::string text_;
};

INSTANTIATE_GZIP_WAYS(BgzfErrors);

TEST_P(BgzfErrors, ThreadsThatCannotStart) {
  for (const int started : {0, 1, 2}) {
    failThreadsAfter(started);
    EXPECT_TRUE(velk::test::inflateFile(file_, 4) == (Inflated{text_, ""})) << started;
  }
}

TEST_P(BgzfErrors, UnreadableFromAnyBlockOn) {
  for (int blocks = 0; blocks < 4; ++blocks) {
    failReadAfter(blocks, EIO);
    const Inflated alone = velk::test::inflateFile(file_, 0);
    EXPECT_EQ(alone.damage, kUnreadable);
    failReadAfter(blocks, EIO);
    EXPECT_TRUE(velk::test::inflateFile(file_, 3) == alone);
  }
}

TEST_P(BgzfErrors, HelpersWithoutMemory) {
  write("file.gz", file_);
  GzipInput input;
  ASSERT_TRUE(input.open("file.gz"));
  failInflateInit(true);  // what is there already inflates
  input.inflateAhead(3);
  std::string got;
  for (std::string_view bytes = input.next(); !bytes.empty(); bytes = input.next()) got += bytes;
  EXPECT_EQ(input.damage(), "");
  EXPECT_TRUE(got == text_);
}

// What zlib alone may say.
class ZlibErrors : public GzipWayTest {
 protected:
  ~ZlibErrors() override {
    failInflate(Z_OK);
    failInflateInit(false);
  }
};

INSTANTIATE_TEST_SUITE_P(All, ZlibErrors,
                         ::testing::Values(GzipWay{InflateLibrary::kZlib, false},
                                           GzipWay{InflateLibrary::kZlib, true}),
                         ::testing::PrintToStringParamName());

TEST_P(ZlibErrors, NoMemoryToBeginWith) {
  failInflateInit(true);
  EXPECT_THROW(GzipInput(), std::bad_alloc);
}

TEST_P(ZlibErrors, NoMemoryToInflate) {
  const std::string member = gzipped("ACGT\n");
  failInflate(Z_MEM_ERROR);
  EXPECT_THROW(inflateFile(member), std::bad_alloc);
  EXPECT_THROW(velk::test::inflateFile(bgzfMember("ACGT\n"), 3), std::bad_alloc);
}

TEST_P(ZlibErrors, FailureThatZlibDoesNotName) {
  const std::string member = gzipped("ACGT\n");
  failInflate(Z_STREAM_ERROR);
  EXPECT_EQ(inflateFile(member), (Inflated{"", "invalid compressed data"}));
}

}  // namespace
}  // namespace velk::test
