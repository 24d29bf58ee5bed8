#ifndef VOR_BASE_EXPORT_H
#define VOR_BASE_EXPORT_H

// Checked before any C++20 code, so that this is the first message of an older compiler.
#if __cplusplus < 202002L
#error "VorToolsInfrastructure needs C++20: compile with -std=c++20 or newer"
#endif

/// Marks the public interface.  The library is built with hidden visibility: a tool can link only
/// against symbols with this mark.
#define VOR_API __attribute__((visibility("default")))

#endif  // VOR_BASE_EXPORT_H
