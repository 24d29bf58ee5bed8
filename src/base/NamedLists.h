#ifndef VOR_BASE_NAMEDLISTS_H
#define VOR_BASE_NAMEDLISTS_H

#include "base/Export.h"
#include "base/VorListPtr.h"
#include "base/VorListVal.h"

// The list classes that the interfaces of the library use by name.  They are classes and not
// aliases, so that a header which only passes one on can forward-declare it.  To fill or read a
// list, include the header of its element as well.

class TACallbackSubscriber;
class TAFileBuffer;
class TAFileName;
class TAPAttr;
class TAPerfo;
class TARefCounter;
class TAThread;
class VorFileBuffer;
class VorFileBufferPool;
struct processInfo;

// Lists of pointers, which they do not own.

class VOR_API VorListPtrTACallbackSubscriber : public VorListPtr<TACallbackSubscriber> {
 public:
  using VorListPtr::VorListPtr;
};

class VOR_API VorListPtrTAFileBuffer : public VorListPtr<TAFileBuffer> {
 public:
  using VorListPtr::VorListPtr;
};

class VOR_API VorListPtrTAPerfo : public VorListPtr<TAPerfo> {
 public:
  using VorListPtr::VorListPtr;
};

class VOR_API VorListPtrTARefCounter : public VorListPtr<TARefCounter> {
 public:
  using VorListPtr::VorListPtr;
};

class VOR_API VorListPtrTAThread : public VorListPtr<TAThread> {
 public:
  using VorListPtr::VorListPtr;
};

class VOR_API VorListPtrVorFileBuffer : public VorListPtr<VorFileBuffer> {
 public:
  using VorListPtr::VorListPtr;
};

class VOR_API VorListPtrVorFileBufferPool : public VorListPtr<VorFileBufferPool> {
 public:
  using VorListPtr::VorListPtr;
};

class VOR_API VorListPtrprocessInfo : public VorListPtr<processInfo> {
 public:
  using VorListPtr::VorListPtr;
};

// Lists of values, which they copy and own.

class VOR_API VorListValTAFileName : public VorListVal<TAFileName> {
 public:
  using VorListVal::VorListVal;
};

class VOR_API VorListValTAPAttr : public VorListVal<TAPAttr> {
 public:
  using VorListVal::VorListVal;
};

#endif  // VOR_BASE_NAMEDLISTS_H
