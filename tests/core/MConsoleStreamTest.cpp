#include "core/MConsoleStream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

#include "core/MStreamTools.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

// Puts a file in the place of standard input or standard output. Nothing may be expected meanwhile on
// output, since the messages would go there.
class Redirection {
 public:
  Redirection(std::FILE* file, const std::string& path, int flags) : file_(file) {
    std::fflush(file_);
    const int other = open(path.c_str(), flags | O_CLOEXEC, 0600);
    kept_ = dup(fileno(file_));
    if (other < 0 || kept_ < 0 || dup2(other, fileno(file_)) < 0)
      throw std::runtime_error("cannot open " + path);
    close(other);
    std::clearerr(file_);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;
  ~Redirection() {
    std::fflush(file_);  // on input this drops what has been read ahead
    dup2(kept_, fileno(file_));
    close(kept_);
    std::clearerr(file_);
  }

 private:
  std::FILE* file_;
  int kept_;
};

class MConsoleStreamTest : public testing::Test {
 protected:
  // What `use` puts on standard output.
  template <typename Use>
  std::string OutputOf(Use use) {
    {
      const Redirection output(stdout, folder.Path("output"), O_WRONLY | O_CREAT | O_TRUNC);
      use();
    }
    return folder.ReadFile("output");
  }
  // Runs `use` with these bytes on standard input.
  template <typename Use>
  void WithInput(const std::string& bytes, Use use) {
    const Redirection input(stdin, folder.WriteFile("input", bytes), O_RDONLY);
    use();
  }
  const TemporaryFolder folder;
};

TEST_F(MConsoleStreamTest, WriteAndPrintfMixInTheOrderOfTheCalls) {
  EXPECT_EQ(OutputOf([] {
              MConsoleStream console;
              std::printf("a");
              Put(console, std::string("b\0c", 3));
              std::printf("d");
              console.WriteTextLine("e");
              std::printf("f");
              console.WriteFiller(1);
            }),
            std::string("ab\0cde\nf\0", 9));
}

TEST_F(MConsoleStreamTest, TextIsTheWholeUtf8) {
  EXPECT_EQ(OutputOf([] {
              MConsoleStream console;
              console.WriteText(MString(u"Übung"));
              console.WriteTextLine(MString(u"ř𝄞"));
              std::printf("still bytes");
            }),
            "\xC3\x9C"
            "bung\xC5\x99\xF0\x9D\x84\x9E\nstill bytes");
}

TEST_F(MConsoleStreamTest, ReadGivesWhatThereIsUpToTheEnd) {
  WithInput("abcdef", [] {
    MConsoleStream console;
    EXPECT_EQ(Take(console, 4), "abcd");
    EXPECT_EQ(Take(console, 4), "ef");
    EXPECT_EQ(Take(console, 4), "");
  });
}

TEST_F(MConsoleStreamTest, LinesAreCutAtTheFirstCarriageReturnOrLineFeed) {
  WithInput("one\n\ntwo\r\nth\rree\nlast", [] {
    MConsoleStream console;
    EXPECT_EQ(Line(console, 80), "0:one");
    EXPECT_EQ(Line(console, 80), "0:");
    EXPECT_EQ(Line(console, 80), "0:two");
    EXPECT_EQ(Line(console, 80), "0:th");
    EXPECT_EQ(Line(console, 80), "0:last");
    EXPECT_EQ(Line(console, 80), "2:");
  });
}

TEST_F(MConsoleStreamTest, LongLinesComeInPieces) {
  WithInput("abcdef\nx\n", [] {
    MConsoleStream console;
    EXPECT_EQ(Line(console, 0), "1:");
    EXPECT_EQ(Line(console, 4), "0:abc");
    EXPECT_EQ(Line(console, 4), "0:def");
    EXPECT_EQ(Line(console, 4), "0:");
    EXPECT_EQ(Line(console, 4), "0:x");
  });
}

TEST_F(MConsoleStreamTest, ReadingAndWritingDoNotDisturbEachOther) {
  const std::string pipe = folder.Path("pipe");  // cannot be sought
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const Redirection input(stdin, pipe, O_RDWR);
  ASSERT_EQ(write(STDIN_FILENO, "abcd", 4), 4);
  std::string first, second;
  EXPECT_EQ(OutputOf([&] {
              MConsoleStream console;
              first = Take(console, 2);
              Put(console, "x");
              second = Take(console, 2);
              Put(console, "y");
            }),
            "xy");
  EXPECT_EQ(first + second, "abcd");
}

TEST_F(MConsoleStreamTest, StreamsCanBeCopiedThroughIt) {
  const std::string bytes = Pattern(10000);
  WithInput(bytes, [&] {
    EXPECT_EQ(OutputOf([] {
                MConsoleStream console;
                MCopyStream(console, console);
              }),
              bytes);
  });
}

TEST_F(MConsoleStreamTest, DestructionAndCloseLeaveInputAndOutputOpen) {
  WithInput("abc", [this] {
    EXPECT_EQ(OutputOf([] {
                { MConsoleStream console; }
                MConsoleStream console;
                console.Close();
                std::printf("%c", std::getchar());
              }),
              "a");
  });
  EXPECT_GE(fcntl(STDIN_FILENO, F_GETFD), 0);
  EXPECT_GE(fcntl(STDOUT_FILENO, F_GETFD), 0);
  EXPECT_TRUE(std::is_nothrow_destructible_v<MConsoleStream>);
}

TEST_F(MConsoleStreamTest, ClosedConsoleRaises) {
  MConsoleStream console;
  EXPECT_TRUE(console.IsValid());
  console.Close();
  EXPECT_FALSE(console.IsValid());
  char text[8];
  EXPECT_RAISES(console.ReadLine(text, sizeof text), "File stream is not initialized.", 258);
  EXPECT_RAISES(console.WriteText("x"), "File stream is not initialized.", 258);
  EXPECT_RAISES(Take(console, 1), "File stream is not initialized.", 258);
}

TEST_F(MConsoleStreamTest, FullOutputRaises) {
  std::string message;
  {
    const Redirection output(stdout, "/dev/full", O_WRONLY);
    MConsoleStream console;
    try {
      Put(console, "abc");
      console.Flush();
    } catch (const MException& raised) {
      message = Utf8(raised.message);
    }
  }
  EXPECT_EQ(message, "Error writing to file \"console\". Probably disk full.");
}

TEST_F(MConsoleStreamTest, InputThatCannotBeReadRaises) {
  const Redirection input(stdin, folder.GetPath(), O_RDONLY | O_DIRECTORY);
  MConsoleStream console;
  char text[8];
  EXPECT_RAISES(console.ReadLine(text, sizeof text), "Error reading from file \"console\".", 256);
  EXPECT_RAISES(Take(console, 1), "Error reading from file \"console\".", 256);
}

}  // namespace
