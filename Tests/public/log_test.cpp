#include "rz/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/trace.h"
#include "support/vectors.h"

namespace {

TEST(Log, AMaskEnablesEachLevelByItself) {
  const Trace trace(1UL << 2 | 1UL << 63);
  for (const unsigned long level : {0UL, 1UL, 2UL, 8UL, 63UL, 64UL, 66UL, ~0UL}) {
    rzlogLog("CRYPTO", level, "level %lu", level);
    EXPECT_EQ(rzlogIsEnabled(level), level == 2 || level == 63) << level;
  }
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"2 level 2", "63 level 63"}));
}

TEST(Log, ErrorsAndWarningsAreTheDefaultAndNoSinkDiscards) {
  rzlogLog("CRYPTO", 1, "nobody reads this");
  std::vector<std::string> lines;
  rzlogSetSink([](void* to, const char*, unsigned long,
                  const char* line) { static_cast<std::vector<std::string>*>(to)->emplace_back(line); },
               &lines);
  for (unsigned long level = 0; level < 64; ++level) rzlogLog("X", level, "%lu", level);
  rzlogSetSink(nullptr, nullptr);
  rzlogLog("X", 1, "no more");
  EXPECT_EQ(rzlogIsEnabled(1), 0);
  EXPECT_EQ(lines, (std::vector<std::string>{"1", "2"}));
}

TEST(Log, LinesOfAnyLengthArriveWhole) {
  const Trace trace;
  for (const size_t length : {510UL, 511UL, 512UL, 513UL, 100000UL}) {
    rzlogLog("CRYPTO", 0, "%s|%g", std::string(length, 'x').c_str(), 0.5);
    EXPECT_EQ(trace.lines().back(), "0 " + std::string(length, 'x') + "|0.5");
  }
}

TEST(Log, BinaryLinesHaveOffsetsHexAndText) {
  const Trace trace;
  unsigned char bytes[18];
  for (size_t i = 0; i < sizeof bytes; ++i) bytes[i] = static_cast<unsigned char>(0x3a + i * 5);
  rzlogLogBin("CRYPTO", 0, bytes, sizeof bytes, "Class::Method : baData:");
  rzlogLogBin("CRYPTO", 0, nullptr, 0, "empty:");
  EXPECT_EQ(trace.lines(), LoadParagraph("traces.txt", "binary lines"));
}

TEST(Log, ASinkMayLogWithoutBeingCalledAgainAndSetTheLevels) {
  int calls = 0;
  rzlogSetSink(
      [](void* count, const char*, unsigned long, const char*) {
        ++*static_cast<int*>(count);
        rzlogLog("CRYPTO", 1, "from the sink");
        rzlogSetLevels(1UL << 2);
      },
      &calls);
  rzlogLog("CRYPTO", 1, "line");
  rzlogLog("CRYPTO", 1, "line of a level that is off");
  EXPECT_EQ(calls, 1);
  const Trace trace(1UL << 1);
  rzlogLog("CRYPTO", 1, "%s", "still alive");
  EXPECT_EQ(trace.lines(), std::vector<std::string>{"1 still alive"});
}

TEST(Log, AChildOfAForkLogsWhateverTheOtherThreadsHeld) {
  rzlogSetSink([](void*, const char*, unsigned long, const char*) { usleep(200); }, nullptr);
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    while (!stop) rzlogLog("CRYPTO", 1, "line");
  });
  int failed = 0;
  for (int i = 0; i < 20; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);  // a lock that nobody unlocks ends here
      rzlogLog("CRYPTO", 1, "from the child");
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    failed += status != 0 ? 1 : 0;
  }
  stop = true;
  writer.join();
  rzlogSetSink(nullptr, nullptr);
  EXPECT_EQ(failed, 0);
}

TEST(Log, WhenSetSinkReturnsTheOldSinkIsNoLongerCalled) {
  struct Box {
    std::atomic<bool> alive{true};
    std::atomic<long> late{0};
  } box;
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    while (!stop) rzlogLog("CRYPTO", 1, "line");
  });
  for (int i = 0; i < 200; ++i) {
    box.alive = true;
    rzlogSetSink(
        [](void* to, const char*, unsigned long, const char*) {
          auto* b = static_cast<Box*>(to);
          if (!b->alive) ++b->late;
        },
        &box);
    std::this_thread::yield();
    rzlogSetSink(nullptr, nullptr);
    box.alive = false;
  }
  stop = true;
  writer.join();
  EXPECT_EQ(box.late, 0);
}

TEST(Log, TheFileSinkAppendsOneUnforgeableRecordForEachLine) {
  const std::string path = testing::TempDir() + "rzlog." + std::to_string(getpid());
  ASSERT_EQ(rzlogSetFileSink(path.c_str()), 0);
  rzlogLog("CRYPTO", 1, "name: %s", "a\nb\x1b");
  EXPECT_EQ(rzlogSetFileSink("/nowhere/at/all"), ENOENT) << "and the sink that was set stays";
  rzlogLog("CRYPTO", 2, "second");
  rzlogSetSink(nullptr, nullptr);
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  std::remove(path.c_str());
  const std::string stamp = "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\\.[0-9]{6}Z [0-9]+/[0-9]+ CRYPTO ";
  EXPECT_THAT(text.str(), testing::MatchesRegex(stamp + "ERROR name: a\\\\x0ab\\\\x1b\n" + stamp + "WARNING second\n"));
}

}  // namespace
