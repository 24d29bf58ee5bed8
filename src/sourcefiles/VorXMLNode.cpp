#include "sourcefiles/VorXMLNode.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/XmlEscaping.h"
#include "sourcefiles/VorXMLNodeListener.h"

namespace {

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsName(std::string_view name) {
  return !name.empty() && IsLetter(name.front()) &&
         std::all_of(name.begin(), name.end(), [](char c) {
           return IsLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
         });
}

std::size_t Index(int position) {
  return static_cast<std::size_t>(position) - 1;  // huge for positions below 1
}

}  // namespace

struct VorXMLNode::Element {
  using Attribute = std::pair<VorString, VorString>;

  explicit Element(const VorString& elementName) : name(elementName) {}
  Element(const Element&) = delete;
  Element& operator=(const Element&) = delete;
  ~Element();

  std::string Start() const;

  const VorString name;
  std::vector<Attribute> attributes;
  std::vector<std::shared_ptr<Element>> children;
  std::weak_ptr<Element> parent;
  std::vector<VorXMLNodeListener*> listeners;  // null for one removed during a notification
  int notifications = 0;                       // that are running
};

// With a list and without recursion: a tree may be deeper than the stack.
VorXMLNode::Element::~Element() {
  std::vector<std::shared_ptr<Element>> left = std::move(children);
  while (!left.empty()) {
    const std::shared_ptr<Element> last = std::move(left.back());
    left.pop_back();
    if (last.use_count() > 1) continue;
    std::move(last->children.begin(), last->children.end(), std::back_inserter(left));
    last->children.clear();
  }
}

// The start tag, up to its last bracket.
std::string VorXMLNode::Element::Start() const {
  std::string text = "<" + std::string(name.View());
  for (const auto& [attribute, value] : attributes) {
    text.append(" ").append(attribute.View()).append("=\"");
    text.append(EscapeXmlAttribute(value).View()).append("\"");
  }
  return text;
}

VorXMLNode::VorXMLNode(const VorString& name) noexcept {
  if (IsName(name.View())) _element = std::make_shared<Element>(name);
}

VorString VorXMLNode::GetName() const noexcept {
  return _element == nullptr ? VorString() : _element->name;
}

int VorXMLNode::SetAttribute(const VorString& name, const VorString& value) noexcept {
  if (_element == nullptr || !IsName(name.View())) return 1;
  for (auto& [known, held] : _element->attributes) {
    if (known != name) continue;
    held = value;
    return 0;
  }
  _element->attributes.emplace_back(name, value);
  return 0;
}

VorString VorXMLNode::GetAttribute(const VorString& name) const noexcept {
  if (_element == nullptr) return VorString();
  for (const auto& [known, value] : _element->attributes) {
    if (known == name) return value;
  }
  return VorString();
}

int VorXMLNode::AttributeCount() const {
  return _element == nullptr ? 0 : static_cast<int>(_element->attributes.size());
}

VorString VorXMLNode::GetAttributeName(int position) const noexcept {
  if (_element == nullptr || Index(position) >= _element->attributes.size()) return VorString();
  return _element->attributes[Index(position)].first;
}

int VorXMLNode::AppendChild(const VorXMLNode& child) noexcept {
  if (_element == nullptr || child.IsNull() || !child._element->parent.expired()) return 1;
  if (child._element == _element) return 1;
  // A child without children is no ancestor, so a tree that grows downwards is not walked up for
  // each new leaf.
  auto above = child._element->children.empty() ? nullptr : _element;
  for (; above != nullptr; above = above->parent.lock()) {
    if (above == child._element) return 1;
  }
  _element->children.push_back(child._element);
  child._element->parent = _element;
  return 0;
}

int VorXMLNode::ChildCount() const {
  return _element == nullptr ? 0 : static_cast<int>(_element->children.size());
}

VorXMLNode VorXMLNode::GetChild(int position) const {
  if (_element == nullptr || Index(position) >= _element->children.size()) return VorXMLNode();
  return VorXMLNode(_element->children[Index(position)]);
}

VorXMLNode VorXMLNode::GetParent() const {
  return _element == nullptr ? VorXMLNode() : VorXMLNode(_element->parent.lock());
}

int VorXMLNode::AddListener(VorXMLNodeListener* listener) noexcept {
  if (_element == nullptr || listener == nullptr) return 1;
  std::vector<VorXMLNodeListener*>& listeners = _element->listeners;
  if (std::find(listeners.begin(), listeners.end(), listener) == listeners.end()) {
    listeners.push_back(listener);
  }
  return 0;
}

// While a notification runs the place is kept, so that it neither skips nor repeats a listener.
int VorXMLNode::RemoveListener(VorXMLNodeListener* listener) {
  if (_element == nullptr || listener == nullptr) return 1;
  std::vector<VorXMLNodeListener*>& listeners = _element->listeners;
  const auto found = std::find(listeners.begin(), listeners.end(), listener);
  if (found == listeners.end()) return 1;
  if (_element->notifications > 0) {
    *found = nullptr;
  } else {
    listeners.erase(found);
  }
  return 0;
}

int VorXMLNode::ListenerCount() const {
  if (_element == nullptr) return 0;
  const std::vector<VorXMLNodeListener*>& listeners = _element->listeners;
  return static_cast<int>(listeners.size()) -
         static_cast<int>(std::count(listeners.begin(), listeners.end(), nullptr));
}

void VorXMLNode::NotifyListeners() noexcept {
  // A listener may destroy this handle, and may change the handle that is passed to it.
  const std::shared_ptr<Element> element = _element;
  if (element == nullptr) return;
  ++element->notifications;
  const std::size_t count = element->listeners.size();
  for (std::size_t i = 0; i < count; ++i) {
    VorXMLNode node(element);
    if (element->listeners[i] != nullptr) element->listeners[i]->Notify(node);
  }
  if (--element->notifications == 0) std::erase(element->listeners, nullptr);
}

VorString VorXMLNode::ToText() const noexcept {
  if (_element == nullptr) return VorString();
  std::string text;
  std::vector<std::pair<const Element*, std::size_t>> open;  // and how many children are written
  const auto begin = [&text, &open](const Element* element) {
    text.append(2 * open.size(), ' ').append(element->Start());
    text += element->children.empty() ? "/>\n" : ">\n";
    if (!element->children.empty()) open.emplace_back(element, 0);
  };
  begin(_element.get());
  while (!open.empty()) {
    auto& [element, written] = open.back();
    if (written < element->children.size()) {
      begin(element->children[written++].get());
      continue;
    }
    const std::string end = "</" + std::string(element->name.View()) + ">\n";
    open.pop_back();
    text.append(2 * open.size(), ' ').append(end);
  }
  return VorString(std::move(text));
}
