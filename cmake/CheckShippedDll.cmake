# Checks a DLL as it ships: it imports only libraries every Windows installation has, it
# carries no debug sections, and its .gnu_debuglink names the separate debug file, which
# lies beside it and holds the debug information.
#
#   cmake -DDLL=path/ozdkrnui.dll -DOBJDUMP=... -DOBJCOPY=... [-DDEBUG_FILE=name] -P CheckShippedDll.cmake
#
# Fails (non-zero exit) with one line per fault.
foreach(var DLL OBJDUMP OBJCOPY)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "CheckShippedDll: ${var} is not set")
  endif()
endforeach()
if(NOT EXISTS "${DLL}")
  message(FATAL_ERROR "CheckShippedDll: ${DLL} does not exist")
endif()
get_filename_component(dll_name "${DLL}" NAME)
get_filename_component(dll_dir "${DLL}" DIRECTORY)
if(NOT DEFINED DEBUG_FILE)
  set(DEBUG_FILE "${dll_name}.debug")
endif()

# Libraries of the system itself (lower case). The MinGW runtime (libstdc++, libgcc,
# libwinpthread) is linked statically, so none of its DLLs may appear.
set(system_dlls
    kernel32.dll user32.dll gdi32.dll advapi32.dll comctl32.dll comdlg32.dll shell32.dll
    shlwapi.dll version.dll ws2_32.dll ole32.dll oleaut32.dll winspool.drv msimg32.dll
    msvcrt.dll ucrtbase.dll ntdll.dll uxtheme.dll)
set(faults "")

execute_process(COMMAND "${OBJDUMP}" -p "${DLL}" OUTPUT_VARIABLE headers RESULT_VARIABLE status ERROR_QUIET)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "CheckShippedDll: ${OBJDUMP} -p ${DLL} failed")
endif()
string(REGEX MATCHALL "DLL Name: [^\r\n]+" import_lines "${headers}")
if(NOT import_lines)
  list(APPEND faults "no imports found")
endif()
set(imports "")
foreach(line IN LISTS import_lines)
  string(REGEX REPLACE "^DLL Name: *" "" import "${line}")
  string(STRIP "${import}" import)
  string(TOLOWER "${import}" lower)
  list(APPEND imports "${import}")
  list(FIND system_dlls "${lower}" known)
  if(known EQUAL -1 AND NOT lower MATCHES "^api-ms-win-[a-z0-9-]+\\.dll$")
    list(APPEND faults "imports ${import}, which is not a system library")
  endif()
endforeach()

execute_process(COMMAND "${OBJDUMP}" -h "${DLL}" OUTPUT_VARIABLE sections RESULT_VARIABLE status ERROR_QUIET)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "CheckShippedDll: ${OBJDUMP} -h ${DLL} failed")
endif()
string(REGEX MATCHALL "[ \t]\\.debug_[a-z_]+" debug_sections "${sections}")
if(debug_sections)
  string(REPLACE ";" "," debug_sections "${debug_sections}")
  list(APPEND faults "carries debug sections:${debug_sections}")
endif()

if(NOT sections MATCHES "[ \t]\\.gnu_debuglink[ \t]")
  list(APPEND faults "has no .gnu_debuglink section")
else()
  set(link_file "${CMAKE_CURRENT_BINARY_DIR}/${dll_name}.debuglink.bin")
  file(REMOVE "${link_file}")
  # objcopy writes a copy as well; only the dumped section is wanted.
  execute_process(COMMAND "${OBJCOPY}" --dump-section ".gnu_debuglink=${link_file}" "${DLL}"
                          "${CMAKE_CURRENT_BINARY_DIR}/${dll_name}.debuglink-copy"
                  RESULT_VARIABLE status ERROR_QUIET)
  file(REMOVE "${CMAKE_CURRENT_BINARY_DIR}/${dll_name}.debuglink-copy")
  set(linked "")
  if(status EQUAL 0 AND EXISTS "${link_file}")
    file(STRINGS "${link_file}" link_strings LIMIT_COUNT 1)
    string(STRIP "${link_strings}" linked)
    file(REMOVE "${link_file}")
  endif()
  if(NOT linked STREQUAL DEBUG_FILE)
    list(APPEND faults ".gnu_debuglink names \"${linked}\", not \"${DEBUG_FILE}\"")
  elseif(NOT EXISTS "${dll_dir}/${DEBUG_FILE}")
    list(APPEND faults "the debug file ${DEBUG_FILE} is not beside the DLL")
  else()
    execute_process(COMMAND "${OBJDUMP}" -h "${dll_dir}/${DEBUG_FILE}" OUTPUT_VARIABLE debug_headers ERROR_QUIET)
    if(NOT debug_headers MATCHES "[ \t]\\.debug_info[ \t]")
      list(APPEND faults "the debug file ${DEBUG_FILE} holds no .debug_info")
    endif()
  endif()
endif()

string(REPLACE ";" ", " imports "${imports}")
if(faults)
  foreach(fault IN LISTS faults)
    message(STATUS "${dll_name}: ${fault}")
  endforeach()
  message(FATAL_ERROR "${dll_name} is not fit to ship (imports: ${imports})")
endif()
message(STATUS "${dll_name}: imports only system libraries (${imports}); debug information in ${DEBUG_FILE}")
