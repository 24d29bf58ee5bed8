#include "persistence/TAPPath.h"

#include "foundation/Tracing.h"

TAPPath::TAPPath(TAPName* name) noexcept : _names{name} {
  name->AddRef();
}

TAPPath::TAPPath(const TAPPath& other) noexcept : TARefCounter(), _names(other._names) {
  for (TAPName* name : _names) name->AddRef();
}

TAPPath::TAPPath(const TAPPath* parent, TAPName* name) noexcept {
  _names.reserve(parent->_names.size() + 1);
  _names = parent->_names;
  _names.push_back(name);
  for (TAPName* each : _names) each->AddRef();
}

TAPPath::~TAPPath() {
  for (TAPName* name : _names) name->Release();
}

TAPName* TAPPath::operator[](int position) const {
  FATAL(position < 1 || position > Size(), "TAPPath::[] : bad index");
  TAPName* const name = _names[static_cast<std::size_t>(position) - 1];
  name->AddRef();
  return name;
}
