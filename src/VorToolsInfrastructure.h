#ifndef VOR_VORTOOLSINFRASTRUCTURE_H
#define VOR_VORTOOLSINFRASTRUCTURE_H

// Every public header of the library.  A source that needs few classes includes their own headers
// and compiles faster.

#include "base/NamedLists.h"
#include "base/VorChar.h"
#include "base/VorCollec.h"
#include "base/VorFCopy.h"
#include "base/VorListPtr.h"
#include "base/VorListVal.h"
#include "base/VorListValVorString.h"
#include "base/VorListValVorUnicodeString.h"
#include "base/VorMap.h"
#include "base/VorMutex.h"
#include "base/VorRawCollPV.h"
#include "base/VorStackTrace.h"
#include "base/VorString.h"
#include "base/VorUnicodeChar.h"
#include "base/VorUnicodeString.h"
#include "containers/TAIndex.h"
#include "containers/TAIndexB.h"
#include "containers/TAIndexI.h"
#include "filenames/DirectoryReading.h"
#include "filenames/TAFileName.h"
#include "foundation/Checksum.h"
#include "foundation/FileUtilities.h"
#include "foundation/LogicalExpression.h"
#include "foundation/TextUtilities.h"
#include "foundation/Tracing.h"
#include "foundation/WildcardMatching.h"
#include "process/TAProcess.h"
#include "process/TAProcessList.h"
#include "process/processInfo.h"

#endif  // VOR_VORTOOLSINFRASTRUCTURE_H
