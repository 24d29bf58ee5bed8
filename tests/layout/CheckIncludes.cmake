# Fails if a file below SOURCES includes a header of a directory that its own must not know.
#
# The table lists the directories of src/ from the bottom up, each with the directories whose headers
# it may include besides its own.  A directory may only name directories above it in the table, so
# there are no cycles.  The umbrella header, which belongs to no directory, includes them all.
cmake_minimum_required(VERSION 3.25)

set(table
  "base:"
  "foundation:  base"
  "containers:  base foundation"
  "filenames:   base foundation"
  "process:     base foundation containers filenames"
  "thread:      base foundation containers filenames process"
  "perfo:       base foundation containers filenames thread"
  "socket:      base foundation containers filenames perfo"
  "persistence: base foundation containers filenames"
  "sourcefiles: base foundation containers filenames thread"
  "regex:       base foundation containers filenames"
  "database:    base foundation containers filenames process")

set(faults "")
set(known "")
foreach(row IN LISTS table)
  string(REGEX MATCHALL "[a-z]+" words ${row})
  list(POP_FRONT words directory)
  foreach(lower IN LISTS words)
    if(NOT lower IN_LIST known)
      string(APPEND faults "the table lists ${directory} before ${lower}, which it may include\n")
    endif()
  endforeach()
  set(allowed_${directory} ${directory} ${words})
  list(APPEND known ${directory})
endforeach()

file(GLOB_RECURSE files RELATIVE ${SOURCES} ${SOURCES}/*/*.h ${SOURCES}/*/*.cpp)
if(files STREQUAL "")
  message(FATAL_ERROR "no sources below '${SOURCES}'")
endif()
foreach(file IN LISTS files)
  string(REGEX MATCH "^[^/]+" directory ${file})
  if(NOT directory IN_LIST known)
    string(APPEND faults "src/${file}: add ${directory} to the table of this test\n")
    continue()
  endif()
  cmake_path(GET file PARENT_PATH here)
  file(STRINGS ${SOURCES}/${file} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
  foreach(include IN LISTS includes)
    string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*" "\\1" header "${include}")
    # As the compiler does: beside the file, then from the root.
    cmake_path(SET beside NORMALIZE "${here}/${header}")
    if(EXISTS ${SOURCES}/${beside})
      set(header ${beside})
    elseif(NOT EXISTS ${SOURCES}/${header})
      string(APPEND faults "src/${file}: there is no header \"${header}\"\n")
      continue()
    endif()
    string(REGEX MATCH "^[^/]+" owner ${header})
    if(NOT owner IN_LIST allowed_${directory})
      string(APPEND faults "src/${file}: ${directory} must not include ${header}\n")
    endif()
  endforeach()
endforeach()

if(faults)
  message(FATAL_ERROR "${faults}")
endif()
