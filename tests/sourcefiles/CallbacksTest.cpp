#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "sourcefiles/TACallbackPublisher.h"
#include "sourcefiles/TACallbackSubscriber.h"
#include "sourcefiles/TAEventBufferDeletion.h"

namespace {

// Writes its letter into a log, and then does what it was told to.
class Logger : public TACallbackSubscriber {
 public:
  Logger(char letter, std::string& log) : _letter(letter), _log(log) {}

  int ReceiveCallback(TACallbackPublisher* publisher, const TAEvent* event) override {
    EXPECT_STREQ(event->GetEventName(), "EventBufferDeletion");
    _log += _letter;
    if (then) then(*publisher);
    return 7;
  }

  std::function<void(TACallbackPublisher&)> then;

 private:
  const char _letter;
  std::string& _log;
};

class Callbacks : public testing::Test {
 protected:
  // What a delivery calls, and what it returns.
  std::string Send() {
    log.clear();
    const int result = publisher.SendCallback(&event);
    return log + std::to_string(result);
  }
  void Add(std::initializer_list<Logger*> loggers) {
    for (Logger* logger : loggers) publisher.AddSubscriber(logger);
  }

  std::string log;
  Logger a{'a', log}, b{'b', log}, c{'c', log}, d{'d', log};
  TACallbackPublisher publisher;
  TAEventBufferDeletion event;
};

}  // namespace

TEST_F(Callbacks, GoToAllInOrderAndAsOftenAsTheyWereAdded) {
  EXPECT_EQ(Send(), "1");
  publisher.RemoveSubscriber(&a);  // from no list
  Add({&b, &a, &b});
  EXPECT_EQ(Send(), "bab0");
  publisher.RemoveSubscriber(&c);  // never added
  publisher.RemoveSubscriber(&b);
  EXPECT_EQ(Send(), "a0");
  publisher.RemoveSubscriber(&a);
  EXPECT_EQ(Send(), "1");
}

TEST_F(Callbacks, ListMayChangeDuringDelivery) {
  Add({&a, &b, &c});
  b.then = [this](TACallbackPublisher& sender) {
    EXPECT_EQ(&sender, &publisher);
    sender.RemoveSubscriber(&b);
  };
  EXPECT_EQ(Send(), "ab0");  // c has moved to where b was
  EXPECT_EQ(Send(), "ac0");

  a.then = [this](TACallbackPublisher& sender) {
    for (int i = 0; i < 100; ++i) sender.AddSubscriber(&d);  // enough to move the list in memory
    a.then = nullptr;
  };
  EXPECT_EQ(Send(), "ac" + std::string(100, 'd') + "0");

  c.then = [this](TACallbackPublisher& sender) {
    for (Logger* logger : {&a, &c, &d}) sender.RemoveSubscriber(logger);
  };
  EXPECT_EQ(Send(), "ac0");
  EXPECT_EQ(Send(), "1");
}
