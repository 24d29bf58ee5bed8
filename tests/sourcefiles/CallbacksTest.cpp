#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "sourcefiles/TACallbackPublisher.h"
#include "sourcefiles/TACallbackSubscriber.h"
#include "sourcefiles/TAEventBufferDeletion.h"

namespace {

// Writes its letter into a log, then calls `then`.
struct Logger : TACallbackSubscriber {
  explicit Logger(char itsLetter) : letter(itsLetter) {}

  int ReceiveCallback(TACallbackPublisher* publisher, const TAEvent* event) override {
    EXPECT_STREQ(event->GetEventName(), "EventBufferDeletion");
    log += letter;
    if (then) then(*publisher);
    return 7;
  }

  const char letter;
  static inline std::string log;
  std::function<void(TACallbackPublisher&)> then;
};

}  // namespace

TEST(Callbacks, FollowChangesOfTheListDuringADelivery) {
  Logger a('a'), b('b'), c('c');
  TACallbackPublisher publisher;
  const auto send = [&] {
    Logger::log.clear();
    const TAEventBufferDeletion event;
    const int result = publisher.SendCallback(&event);
    return Logger::log + std::to_string(result);
  };
  publisher.RemoveSubscriber(&a);  // from no list
  EXPECT_EQ(send(), "1");
  for (Logger* logger : {&b, &a, &b, &c}) publisher.AddSubscriber(logger);
  EXPECT_EQ(send(), "babc0");

  b.then = [&b](TACallbackPublisher& sender) { sender.RemoveSubscriber(&b); };
  EXPECT_EQ(send(), "bc0");  // a has moved to where b was
  a.then = [&](TACallbackPublisher& sender) {
    for (int i = 0; i < 100; ++i) sender.AddSubscriber(&c);  // enough to move the list in memory
    a.then = nullptr;
  };
  EXPECT_EQ(send(), "ac" + std::string(100, 'c') + "0");
  c.then = [&](TACallbackPublisher& sender) {
    for (Logger* logger : {&a, &c}) sender.RemoveSubscriber(logger);
  };
  EXPECT_EQ(send(), "ac0");
  EXPECT_EQ(send(), "1");
}
