#ifndef VOR_FOUNDATION_XMLESCAPING_H
#define VOR_FOUNDATION_XMLESCAPING_H

#include "../base/Export.h"
#include "../base/VorString.h"

// Escaping of texts with arbitrary bytes for XML documents.
//
// The characters & < > " ' become entities.  Each character that XML does not allow becomes a
// question mark: NUL and other control characters, U+FFFE, U+FFFF, and each byte that is not valid
// UTF-8.
//
// substituteEntities (TextUtilities.h) is the older form: it also replaces the word "toreplace" and
// leaves characters that XML does not allow.
//
// Nothing here fails; running out of memory ends the process.
// Threads: both functions may be called from any thread.

/// Escapes \a text for the content of an element.  Tabs and newlines stay.  A carriage return
/// becomes a character reference, because a parser would read it as a newline.
VOR_API VorString EscapeXml(const VorString& text) noexcept;

/// Escapes \a value for a quoted attribute value.  Tabs, newlines and carriage returns become
/// character references, because a parser would read them as blanks.
VOR_API VorString EscapeXmlAttribute(const VorString& value) noexcept;

#endif  // VOR_FOUNDATION_XMLESCAPING_H
