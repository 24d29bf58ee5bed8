#include "sourcefiles/XMLFileDescription.h"

#include <unistd.h>

constinit FileDescriptionListener _fileListener;
constinit DirectoryDescriptionListener _directoryListener;
constinit DirectoryDescriptionListenerRW _directoryListenerRW;

namespace {

VorXMLNode Describe(const char* element, const TAFileName& path, VorXMLNodeListener* listener) {
  VorXMLNode node(element);
  node.SetAttribute("Name", VorString(path.basename(1)));
  node.SetAttribute("Path", VorString(path));
  node.AddListener(listener);
  return node;
}

}  // namespace

void FileDescriptionListener::Notify(VorXMLNode& node) {
  node.RemoveListener(this);
}

void DirectoryDescriptionListener::Notify(VorXMLNode& node) {
  node.RemoveListener(this);
}

void DirectoryDescriptionListenerRW::Notify(VorXMLNode& node) {
  node.RemoveListener(this);
}

VorXMLNode GetFileDescription(TAFileName path) noexcept {
  if (path.IsFile() != 0) return Describe("File", path, &_fileListener);
  if (path.IsDirectory() != 0) return Describe("Directory", path, &_directoryListener);
  return VorXMLNode();
}

VorXMLNode GetFileDescriptionRW(TAFileName path) noexcept {
  if (path.IsFile() != 0) {
    const bool isOpen = access(path, R_OK | W_OK) == 0;
    return Describe(isOpen ? "FileRW" : "File", path, &_fileListener);
  }
  if (path.IsDirectory() != 0) return Describe("Directory", path, &_directoryListenerRW);
  return VorXMLNode();
}

void RefreshFileDescription(VorXMLNode&) {}

void RefreshFileDescriptionRW(VorXMLNode&) {}
