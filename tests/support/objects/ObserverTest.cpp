#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

#include "kpx/report/Error.h"
#include "kpx/support/objects/CObservable.h"
#include "kpx/support/Operations.h"

namespace kpx {
namespace {

class Subject final : public CObservable {
 public:
  using CObservable::clearChanged;
  using CObservable::setChanged;
};

class ObserverTest : public testing::Test {
 protected:
  class Observer final : public IObserver {
   public:
    Observer(ObserverTest& test, char name) : test_(test), name_(name) {}
    void update(CObservable* changed) override {
      EXPECT_EQ(changed, &test_.subject);
      test_.calls += name_;
      if (then) then();
    }
    std::function<void()> then;

   private:
    ObserverTest& test_;
    char name_;
  };

  /// Who was called, in order.
  std::string notify() {
    calls.clear();
    subject.setChanged();
    subject.notifyObservers();
    return calls;
  }

  Subject subject;
  std::string calls;
  Observer a{*this, 'a'}, b{*this, 'b'}, c{*this, 'c'};
};

TEST_F(ObserverTest, EachRegistrationIsCalledOncePerChange) {
  subject.addObserver(&a);
  subject.addObserver(&b);
  subject.addObserver(nullptr);
  subject.addObserver(&a);
  EXPECT_EQ(subject.countObservers(), 4);
  subject.notifyObservers();
  EXPECT_EQ(calls, "");
  EXPECT_EQ(notify(), "aba");
  subject.notifyObservers();
  EXPECT_EQ(calls, "aba");
  EXPECT_EQ(subject.hasChanged(), 0);
  subject.deleteObserver(&a);
  subject.deleteObserver(&c);  // never registered
  EXPECT_EQ(notify(), "ba");
  subject.deleteObservers();
  EXPECT_EQ(subject.countObservers(), 0);
  EXPECT_EQ(notify(), "");
}

TEST_F(ObserverTest, OverloadWithArgumentDoesNothing) {
  subject.addObserver(&a);
  subject.setChanged();
  subject.notifyObservers(nullptr);
  EXPECT_EQ(calls, "");
  EXPECT_EQ(subject.hasChanged(), 1);
}

TEST_F(ObserverTest, ChangeMadeDuringANotificationIsErased) {
  subject.addObserver(&a);
  a.then = [this] { subject.setChanged(); };
  EXPECT_EQ(notify(), "a");
  EXPECT_EQ(subject.hasChanged(), 0);
}

TEST_F(ObserverTest, RegistrationsMayChangeDuringANotification) {
  const struct {
    std::function<void()> then;
    std::string now, next;
  } cases[] = {
      {[this] { subject.deleteObserver(&a); }, "abc", "bc"},
      {[this] { subject.deleteObserver(&b); }, "ac", "ac"},
      {[this] { subject.deleteObservers(); }, "a", ""},
      {[this] { subject.addObserver(&b); }, "abc", "abcb"},
      {[this] {
         subject.deleteObserver(&c);
         subject.addObserver(&c);
       },
       "ab", "abc"},
  };
  for (const auto& each : cases) {
    subject.deleteObservers();
    for (Observer* const observer : {&a, &b, &c}) subject.addObserver(observer);
    a.then = each.then;
    EXPECT_EQ(notify(), each.now);
    a.then = nullptr;
    EXPECT_EQ(subject.countObservers(), static_cast<int>(each.next.size()));
    EXPECT_EQ(notify(), each.next);
  }
}

TEST_F(ObserverTest, ExceptionEndsTheNotificationIsReportedAndKeepsTheMark) {
  for (Observer* const observer : {&a, &b}) subject.addObserver(observer);
  a.then = [this] {
    subject.deleteObserver(&a);
    throw std::runtime_error("a");
  };
  static int reported;
  reported = 0;
  const ErrorSink earlier = setErrorSink([](int number) noexcept { reported = number; });
  EXPECT_THROW(notify(), std::runtime_error);
  setErrorSink(earlier);
  EXPECT_EQ(reported, "CObservable::notifyObservers"_support.value());
  EXPECT_EQ(subject.hasChanged(), 1);
  EXPECT_EQ(notify(), "b");
}

}  // namespace
}  // namespace kpx
