// Files read in blocks: signals that come in between, and reads that fail.
#include "streaming/blockReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <thread>

#include "tests/streaming/failingCalls.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

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

}  // namespace
}  // namespace velk::test
