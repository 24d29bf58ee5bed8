#error "a user's own base/Export.h was taken for the library's"
