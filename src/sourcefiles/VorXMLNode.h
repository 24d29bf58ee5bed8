#ifndef VOR_SOURCEFILES_VORXMLNODE_H
#define VOR_SOURCEFILES_VORXMLNODE_H

#include <memory>
#include <utility>

#include "../base/Export.h"
#include "../base/VorString.h"

class VorXMLNodeListener;

/// An element of an XML document: a name, attributes in the order in which they were set, child
/// elements and listeners.
///
/// A node is a handle: its copies refer to the same element, and all of them show a change made
/// through one.  The empty node refers to no element; nothing can be added to it.
///
/// Elements form trees: an element has at most one parent and is never an ancestor of itself.
/// Positions are 1-based.
///
/// Ownership: an element lives as long as a handle to it or its parent lives.
/// Errors:    0 success, 1 failure with nothing changed.  Running out of memory ends the process.
/// Threads:   a tree and its handles belong to one thread at a time.
class VOR_API VorXMLNode {
 public:
  /// The empty node.
  VorXMLNode() noexcept = default;
  /// A new element.  A name consists of ASCII letters, digits, "_", "-" and ".", and begins with a
  /// letter or "_".  Any other \a name makes the empty node.
  explicit VorXMLNode(const VorString& name) noexcept;

  /// 1 for the empty node, else 0.
  int IsNull() const { return _element == nullptr; }
  /// True if both refer to the same element, or to none.
  bool operator==(const VorXMLNode& other) const = default;
  /// "" for the empty node.
  VorString GetName() const noexcept;

  /// Sets an attribute; a new one becomes the last.  Fails for the empty node, and if \a name could
  /// not be the name of an element.
  int SetAttribute(const VorString& name, const VorString& value) noexcept;
  /// "" if there is none of that name.
  VorString GetAttribute(const VorString& name) const noexcept;
  int AttributeCount() const;
  /// The name of the attribute at a position; "" outside.
  VorString GetAttributeName(int position) const noexcept;

  /// Makes \a child the last child.  Fails if either node is empty, if the child has a parent, or
  /// if it is this element or an ancestor of it.
  int AppendChild(const VorXMLNode& child) noexcept;
  int ChildCount() const;
  /// The child at a position; the empty node outside.
  VorXMLNode GetChild(int position) const;
  /// The empty node if there is none.
  VorXMLNode GetParent() const;

  /// Attaches \a listener; adding it again changes nothing.  Fails for the empty node and null.
  int AddListener(VorXMLNodeListener* listener) noexcept;
  /// Fails if \a listener is not attached.
  int RemoveListener(VorXMLNodeListener* listener);
  int ListenerCount() const;
  /// Notifies the listeners in the order in which they were added.  Listeners that are removed
  /// before their turn, or added meanwhile, are not notified.
  void NotifyListeners() noexcept;

  /// The element and all elements below it as an XML document in UTF-8, without a declaration.  One
  /// line for each tag; each level is indented by two blanks.  "" for the empty node.
  ///
  /// The text is well-formed whatever the values hold: they are escaped as EscapeXmlAttribute does.
  VorString ToText() const noexcept;

 private:
  struct Element;

  explicit VorXMLNode(std::shared_ptr<Element> element) : _element(std::move(element)) {}

  std::shared_ptr<Element> _element;  // null for the empty node
};

#endif  // VOR_SOURCEFILES_VORXMLNODE_H
