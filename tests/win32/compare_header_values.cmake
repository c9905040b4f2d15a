# cmake -DCPP=cpp -DOURS=<our include dir> -DMINGW=<mingw include dir> -DWORK=<dir> -P this
# Expands every object-like macro of our headers with both header sets and
# compares the numbers (and strings) they come to. Names mingw-w64 lacks, and
# our own TESK_ extensions, are not compared.
if(NOT EXISTS ${MINGW}/windows.h)
  message("SKIPPED: no mingw-w64 headers in ${MINGW}")
  return()
endif()

set(headers windef.h winerror.h winbase.h winreg.h wingdi.h winuser.h winspool.h icm.h)
set(names "")
foreach(h ${headers})
  file(STRINGS ${OURS}/${h} lines REGEX "^[ \t]*#[ \t]*define[ \t]+[A-Za-z_][A-Za-z0-9_]*([ \t]|$)")
  foreach(line ${lines})
    string(REGEX REPLACE "^[ \t]*#[ \t]*define[ \t]+([A-Za-z_][A-Za-z0-9_]*).*" "\\1" name "${line}")
    if(NOT name MATCHES "^TESK_")
      list(APPEND names ${name})
    endif()
  endforeach()
endforeach()
list(REMOVE_DUPLICATES names)

# One line per name, "probe_<name> <expansion>", after the headers.
set(probe "#include <windows.h>\n#include <winspool.h>\n#include <icm.h>\n")
foreach(name ${names})
  string(APPEND probe "probe_${name} ${name}\n")
endforeach()
file(WRITE ${WORK}/header_values_probe.cpp "${probe}")

function(expand out_prefix)
  execute_process(COMMAND ${CPP} -P ${ARGN} ${WORK}/header_values_probe.cpp
                  OUTPUT_VARIABLE text ERROR_VARIABLE errors RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "preprocessing failed: ${errors}")
  endif()
  string(REPLACE ";" "\\;" text "${text}")
  string(REPLACE "\n" ";" text "${text}")
  foreach(line ${text})
    if(line MATCHES "^probe_([A-Za-z0-9_]+) (.*)$")
      set(${out_prefix}_${CMAKE_MATCH_1} "${CMAKE_MATCH_2}" PARENT_SCOPE)
    endif()
  endforeach()
endfunction()

expand(ours -x c++ -std=c++20 -DUNICODE -D_UNICODE -I${OURS})
# The host preprocessor as mingw's: only its own headers and the compiler's.
execute_process(COMMAND ${CPP} -print-file-name=include OUTPUT_VARIABLE builtin OUTPUT_STRIP_TRAILING_WHITESPACE)
expand(theirs -x c++ -undef -nostdinc -isystem ${MINGW} -isystem ${builtin}
       -D_WIN32 -D_WIN64 -D__MINGW32__ -D__MINGW64__ -D__x86_64__ -D__GNUC__=12 -D__STDC__
       -D__cplusplus=202002L -DUNICODE -D_UNICODE)

# An integer constant expression with its casts and suffixes dropped, or "".
function(evaluate expression out)
  set(e "${expression}")
  # A multi-character constant ('RGB ') is its characters' bytes, first one highest.
  while(e MATCHES "'([^'\\\\]+)'")
    string(HEX "${CMAKE_MATCH_1}" bytes)
    string(REPLACE "${CMAKE_MATCH_0}" "0x${bytes}" e "${e}")
  endwhile()
  # A cast is a parenthesised type name before an operand.
  string(REGEX REPLACE "\\([ ]*[A-Za-z_][A-Za-z0-9_ ]*\\**[ ]*\\)[ ]*([-~(0-9])" "\\1" e "${e}")
  string(REGEX REPLACE "\\([ ]*[A-Za-z_][A-Za-z0-9_ ]*\\**[ ]*\\)[ ]*([-~(0-9])" "\\1" e "${e}")
  string(REGEX REPLACE "(0[xX][0-9a-fA-F]+|[0-9]+)[uUlL]+" "\\1" e "${e}")
  string(REGEX REPLACE "0[xX][0-9a-fA-F]+|[0-9]+" "" rest "${e}")
  if(e STREQUAL "" OR NOT rest MATCHES "^[-+*/%|&^~<>() ]*$")
    set(${out} "" PARENT_SCOPE)
    return()
  endif()
  math(EXPR value "${e}")
  # Values of 32-bit types compare as their 32 bits.
  if(value GREATER_EQUAL -2147483648 AND value LESS 4294967296)
    math(EXPR value "${value} & 0xFFFFFFFF")
  endif()
  set(${out} "${value}" PARENT_SCOPE)
endfunction()

set(compared 0)
set(mismatches "")
foreach(name ${names})
  set(a "${ours_${name}}")
  set(b "${theirs_${name}}")
  if(b STREQUAL name OR NOT DEFINED theirs_${name})
    continue()  # not in mingw-w64's headers
  endif()
  if(a MATCHES "^L?\"")
    math(EXPR compared "${compared} + 1")
    if(NOT a STREQUAL b)
      string(APPEND mismatches "  ${name}: ours ${a}, SDK ${b}\n")
    endif()
    continue()
  endif()
  evaluate("${a}" va)
  if(va STREQUAL "")
    continue()  # a type, a calling convention or a function-like macro
  endif()
  evaluate("${b}" vb)
  math(EXPR compared "${compared} + 1")
  if(NOT va STREQUAL vb)
    string(APPEND mismatches "  ${name}: ours ${a}, SDK ${b}\n")
  endif()
endforeach()

message("${compared} values compared with mingw-w64's headers")
if(NOT mismatches STREQUAL "")
  message(FATAL_ERROR "values differ from the Windows SDK:\n${mismatches}")
endif()
