#include "sourcefiles/TACallbackPublisher.h"

#include "sourcefiles/TACallbackSubscriber.h"

TACallbackPublisher::TACallbackPublisher() = default;

TACallbackPublisher::~TACallbackPublisher() = default;

void TACallbackPublisher::AddSubscriber(TACallbackSubscriber* subscriber) noexcept {
  if (_subscribers == nullptr) _subscribers = std::make_unique<VorListPtrTACallbackSubscriber>();
  _subscribers->Append(subscriber);
}

void TACallbackPublisher::RemoveSubscriber(TACallbackSubscriber* subscriber) {
  if (_subscribers == nullptr) return;
  for (int i = _subscribers->Size(); i > 0; --i) {
    if ((*_subscribers)[i] == subscriber) _subscribers->RemovePosition(i);
  }
}

int TACallbackPublisher::SendCallback(const TAEvent* event) {
  if (_subscribers == nullptr || _subscribers->Size() == 0) return 1;
  // By position, and with the size read again each time: every call may change the list.
  for (int i = 1; i <= _subscribers->Size(); ++i) (*_subscribers)[i]->ReceiveCallback(this, event);
  return 0;
}
