#include "regex/TAUnicodeRegularExpression.h"

#include <new>

#include "regex/FilterProgram.h"

namespace {

// Keys of the cache end at a NUL, so a text that contains one could be confused with another.
bool HoldsNul(const VorUnicodeString& text) {
  return !(text == text.CastToCharPtr());
}

// The values in the cache point to one of these.
constinit char accepted;
constinit char refused;

}  // namespace

TAUnicodeRegularExpression::TAUnicodeRegularExpression(const char* filter) noexcept
    : _program(std::make_unique<vor::FilterProgram>()) {
  SetFilter(filter == nullptr ? "*" : filter, URE_Cache);
}

TAUnicodeRegularExpression::TAUnicodeRegularExpression(const VorUnicodeString& filter) noexcept
    : _program(std::make_unique<vor::FilterProgram>()) {
  SetFilter(filter.GetLengthInChar() < 1 ? VorUnicodeString("*") : filter, URE_Cache);
}

TAUnicodeRegularExpression::TAUnicodeRegularExpression(
    const TAUnicodeRegularExpression& other) noexcept
    : _program(std::make_unique<vor::FilterProgram>()) {
  SetFilter(other.GetFilter(), URE_Cache);
  _stepLimit = other._stepLimit;
}

TAUnicodeRegularExpression& TAUnicodeRegularExpression::operator=(
    const TAUnicodeRegularExpression& other) noexcept {
  SetFilter(other.GetFilter(), URE_Cache);
  _stepLimit = other._stepLimit;
  return *this;
}

TAUnicodeRegularExpression::~TAUnicodeRegularExpression() {
  const std::unique_ptr<VorMapIterator> filters(_cache.getIterator());
  while (filters != nullptr && filters->next() != 0) {
    delete static_cast<VorHashSCMap*>(filters->getValue());
  }
}

int TAUnicodeRegularExpression::SetFilter(const VorUnicodeString& filter, URE_type type) {
  const VorUnicodeString stripped =
      filter.IsNull() ? VorUnicodeString("*") : filter.Strip(VorUnicodeString::Both, ' ');
  _results = nullptr;
  if (!_program->Compile(stripped)) return 1;
  if (type == URE_Cache && !HoldsNul(filter) && ResultsOf(filter) == nullptr) {
    std::unique_ptr<VorHashSCMap> results(new (std::nothrow) VorHashSCMap(nullptr));
    const int filters = _cache.getSize();
    if (results != nullptr) _cache.insert(filter, results.get());
    if (_cache.getSize() == filters) return 1;
    results.release();  // the cache refers to it, even if the key could not be copied
  }
  if (!HoldsNul(stripped)) _results = ResultsOf(stripped);
  return 0;
}

VorUnicodeString TAUnicodeRegularExpression::GetFilter() const {
  return _program->GetFilter();
}

VorHashSCMap* TAUnicodeRegularExpression::ResultsOf(const VorUnicodeString& filter) {
  void* results = nullptr;
  _cache.search(filter, &results);
  return static_cast<VorHashSCMap*>(results);
}

int TAUnicodeRegularExpression::CheckFromFilter(const VorUnicodeString& subject) {
  using Result = vor::FilterProgram::Result;
  _isStepLimitReached = false;
  const bool isRemembered = _results != nullptr && !HoldsNul(subject);
  void* known = nullptr;
  if (isRemembered && _results->search(subject, &known) != 0) return known == &accepted;
  const Result result =
      _program->Match(subject, _stepLimit > 0 ? _stepLimit : vor::FilterProgram::kNoLimit);
  _isStepLimitReached = result == Result::kStopped;
  const bool isAccepted = result == Result::kAccepted;
  if (isRemembered && !_isStepLimitReached) {
    _results->insert(subject, isAccepted ? &accepted : &refused);
  }
  return isAccepted;
}

int TAUnicodeRegularExpression::_checkCharacterRule(const VorUnicodeChar& c, int op) const {
  return _program->Passes(c, op) ? 1 : 0;
}

void TAUnicodeRegularExpression::_print() const {
  _program->Print();
}
