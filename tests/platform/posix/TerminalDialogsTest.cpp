#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "kpx/platform/InputDialog.h"
#include "kpx/platform/ProgressDialog.h"
#include "tests/common/TextPrinter.h"
#include "tests/platform/ManualClock.h"

namespace kpx {

using namespace literals;

namespace {

/// A terminal in the place of standard input and standard error.
class PseudoTerminal {
 public:
  PseudoTerminal()
      : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)),
        input_(::dup(STDIN_FILENO)),
        error_(::dup(STDERR_FILENO)) {
    EXPECT_EQ(::grantpt(master_), 0);
    EXPECT_EQ(::unlockpt(master_), 0);
    const int slave = ::open(::ptsname(master_), O_RDWR | O_NOCTTY);
    ::dup2(slave, STDIN_FILENO);
    ::dup2(slave, STDERR_FILENO);
    ::close(slave);
  }
  ~PseudoTerminal() {
    ::dup2(input_, STDIN_FILENO);
    ::dup2(error_, STDERR_FILENO);
    for (const int file : {master_, input_, error_}) ::close(file);
  }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  void type(const std::string& keys) const {
    EXPECT_EQ(::write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  /// What the person has seen since the last look; typed keys are part of it.
  std::string seen() const {
    std::string text;
    char part[512];
    for (ssize_t size = 0; (size = ::read(master_, part, sizeof part)) > 0;) {
      text.append(part, static_cast<std::size_t>(size));
    }
    return text;
  }

 private:
  int master_;
  int input_;
  int error_;
};

TEST(TerminalDialogsTest, AsksForOneLine) {
  const InputDialogRequest request{
      .caption = u"Punkt", .prompt = u"Nummer\x1B[2J:", .initialText = u"1", .maximumLength = 5};
  const PseudoTerminal terminal;
  struct Case {
    std::string keys;
    std::optional<CString> answer;
  };
  const Case cases[] = {
      {"größ\n", u"größ"_cs},     {"\n", u"1"_cs},  {"\x04", std::nullopt},
      {"1234567\n", u"12345"_cs}, {" \n", u" "_cs},
  };
  for (const Case& each : cases) {
    terminal.type(each.keys);
    EXPECT_EQ(showInputDialog(request), each.answer) << each.keys;
    EXPECT_NE(terminal.seen().find("Punkt\r\nNummer\uFFFD[2J: [1] "), std::string::npos);
  }
}

TEST(TerminalDialogsTest, NobodyIsAskedWhereNobodyIs) {
  const PseudoTerminal terminal;
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ASSERT_EQ(::write(ends[1], "1\n", 2), 2);
  ::dup2(ends[0], STDIN_FILENO);
  EXPECT_FALSE(showInputDialog({.prompt = u"Nummer"}).has_value());
  EXPECT_EQ(terminal.seen(), "");
  ::close(ends[0]);
  ::close(ends[1]);
}

TEST(TerminalDialogsTest, ProgressIsOneLineThatGoesAway) {
  const ManualClock clock(100);
  const PseudoTerminal terminal;
  const std::string third(10, '#');
  {
    ProgressDialog dialog({.caption = u"Auspacken"});
    EXPECT_TRUE(dialog.show({.done = 1, .total = 3, .text = u"C:\\a\x1B\nb"}));
    EXPECT_EQ(terminal.seen(), "\r[" + third + std::string(20, '.') + "]  33 %  C:\\a\uFFFD b");
    EXPECT_TRUE(dialog.show({.done = 3, .total = 3}));
    EXPECT_EQ(terminal.seen(), "\r[" + third + third + third + "] 100 %  Auspacken");
    const CString path = CString(u'x', 100) + u"/Übersicht.xml";
    EXPECT_TRUE(dialog.show({.done = ~0ull / 2, .total = ~0ull, .text = path}));
    EXPECT_EQ(CString::fromUtf8(terminal.seen()).GetLength(), 80);
    EXPECT_TRUE(dialog.show({.done = 7, .total = 0, .text = u"\xD83D"}));
    EXPECT_EQ(terminal.seen(),
              "\r[#" + std::string(29, '.') + "]        \uFFFD" + std::string(79 - 41, ' '));
  }
  EXPECT_EQ(terminal.seen(), "\r" + std::string(79, ' ') + "\r");
}

volatile std::sig_atomic_t ownSignals = 0;

TEST(TerminalDialogsTest, InterruptCancelsAndTheHostsHandlingComesBack) {
  const auto before = std::signal(SIGINT, [](int) { ownSignals = ownSignals + 1; });
  const auto beforeTerminate = std::signal(SIGTERM, SIG_IGN);
  {
    const ManualClock clock(100);
    const PseudoTerminal terminal;
    ProgressDialog dialog({});
    std::raise(SIGTERM);  // ignored, and stays so
    EXPECT_TRUE(dialog.show({.done = 1, .total = 2}));
    std::raise(SIGINT);
    EXPECT_FALSE(dialog.show({.done = 1, .total = 2}));
    EXPECT_EQ(ownSignals, 0);
  }
  std::raise(SIGINT);
  EXPECT_EQ(ownSignals, 1);
  {
    // Where nobody watches, only a program that asks for it gives its signals away.
    ProgressDialog dialog({});
    std::raise(SIGINT);
    EXPECT_EQ(ownSignals, 2);
  }
  std::signal(SIGINT, before);
  std::signal(SIGTERM, beforeTerminate);
}

}  // namespace
}  // namespace kpx
