#include "sourcefiles/TACallbackSubscriber.h"

TACallbackSubscriber::TACallbackSubscriber() = default;

TACallbackSubscriber::~TACallbackSubscriber() = default;
