#ifndef VOR_BASE_EXPORT_H
#define VOR_BASE_EXPORT_H

/// Marks what belongs to the public interface.  The library is built with hidden visibility, so
/// whatever does not carry this mark cannot be linked against.
#define VOR_API __attribute__((visibility("default")))

#endif  // VOR_BASE_EXPORT_H
