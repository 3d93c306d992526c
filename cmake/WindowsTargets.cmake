# The Windows build: the plug-in DLL, its tests under Wine, and the tools.

add_compile_definitions(UNICODE _UNICODE NOMINMAX _WIN32_WINNT=0x0601 WINVER=0x0601)
set(OZDK_WARNINGS -Wall -Wextra -Wno-cast-function-type -Wno-missing-field-initializers)

# Everything runs under Wine without the MinGW runtime DLLs.
set(OZDK_STATIC_LINK -static -static-libgcc -static-libstdc++)

set(OZDK_SYSTEM_LIBRARIES
    winspool comctl32 comdlg32 shell32 shlwapi version ws2_32 ole32 oleaut32 uuid
    gdi32 msimg32 user32 advapi32 kernel32)

# Each folder is a library of its own, linked only to the folders below it (frame/ on
# top, then document_ui/, printer_ui/, device/, config/, base/), and its include root
# shows only those folders, so an include from a higher one is not found. resources/
# holds id headers every folder above base/ may include. device/protocol/ is the
# portable core of device/: it sees base/, config/ and resources/ but no other header
# of device/.
set(OZDK_LAYERS base config device printer_ui document_ui frame)
foreach(folder IN LISTS OZDK_LAYERS)
  file(GLOB OZDK_${folder}_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
endforeach()
list(REMOVE_ITEM OZDK_frame_SOURCES ${CMAKE_SOURCE_DIR}/frame/dll_entry.cpp)
set(OZDK_protocol_SOURCES ${OZDK_PROTOCOL_SOURCES} ${CMAKE_SOURCE_DIR}/config/ui_config.h)

# ozdk_add_layer(NAME BELOW FOLDER...): the library ozdk_NAME, linked to the library
# BELOW, whose sources may include the FOLDERs.
function(ozdk_add_layer name below)
  add_library(ozdk_${name} STATIC ${OZDK_${name}_SOURCES})
  set_target_properties(ozdk_${name} PROPERTIES LINKER_LANGUAGE CXX)
  ozdk_include_root(ozdk_${name} ${ARGN})
  target_compile_options(ozdk_${name} PRIVATE ${OZDK_WARNINGS})
  target_link_libraries(ozdk_${name} PUBLIC ${below})
endfunction()
ozdk_add_layer(base "${OZDK_SYSTEM_LIBRARIES}" base)
ozdk_add_layer(config ozdk_base config base resources)
ozdk_add_layer(protocol ozdk_config device/protocol config base resources)
ozdk_add_layer(device "ozdk_protocol;ozdk_config" device config base resources)
ozdk_add_layer(printer_ui ozdk_device printer_ui device config base resources)
ozdk_add_layer(document_ui ozdk_printer_ui document_ui printer_ui device config base resources)
ozdk_add_layer(frame ozdk_document_ui frame document_ui printer_ui device config base resources)

# The product's code as a whole: linked into the DLL, and into the tests that call its
# routines directly.
add_library(ozdkrnui_impl INTERFACE)
target_link_libraries(ozdkrnui_impl INTERFACE ozdk_frame ozdk_document_ui ozdk_printer_ui ozdk_device
                      ozdk_protocol ozdk_config ozdk_base)

set(OZDK_RESOURCE_FILE ${CMAKE_SOURCE_DIR}/resources/ozdkrnui.rc)
# windres reports no dependencies: every folder that compiles the resource script names
# what it includes (source properties are per folder).
file(GLOB OZDK_RESOURCE_INPUTS CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/*.*
     ${CMAKE_SOURCE_DIR}/resources/pictures/*)
list(REMOVE_ITEM OZDK_RESOURCE_INPUTS ${OZDK_RESOURCE_FILE})
macro(ozdk_track_resource_inputs)
  set_property(SOURCE ${OZDK_RESOURCE_FILE} APPEND PROPERTY OBJECT_DEPENDS ${OZDK_RESOURCE_INPUTS})
endmacro()
ozdk_track_resource_inputs()

add_library(ozdkrnui SHARED
    ${CMAKE_SOURCE_DIR}/frame/dll_entry.cpp
    ${CMAKE_SOURCE_DIR}/frame/ozdkrnui.def
    ${OZDK_RESOURCE_FILE})
set_target_properties(ozdkrnui PROPERTIES PREFIX "" OUTPUT_NAME ozdkrnui)
target_compile_options(ozdkrnui PRIVATE ${OZDK_WARNINGS})
target_link_options(ozdkrnui PRIVATE ${OZDK_STATIC_LINK})
target_link_libraries(ozdkrnui PRIVATE ozdkrnui_impl)

# What ships is the DLL without its debug information: after every link the debug
# sections move to ozdkrnui.dll.debug beside it, and the DLL keeps only a
# .gnu_debuglink naming that file (and its checksum) for debuggers. The tests and the
# demo load the stripped DLL too.
if(NOT CMAKE_OBJCOPY)
  find_program(CMAKE_OBJCOPY NAMES x86_64-w64-mingw32-objcopy REQUIRED)
endif()
if(NOT CMAKE_OBJDUMP)
  find_program(CMAKE_OBJDUMP NAMES x86_64-w64-mingw32-objdump REQUIRED)
endif()
add_custom_command(TARGET ozdkrnui POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ozdkrnui.dll ozdkrnui.dll.debug
    COMMAND ${CMAKE_OBJCOPY} --strip-debug --strip-unneeded --add-gnu-debuglink=ozdkrnui.dll.debug ozdkrnui.dll
    WORKING_DIRECTORY $<TARGET_FILE_DIR:ozdkrnui>
    COMMENT "Moving the debug information of ozdkrnui.dll to ozdkrnui.dll.debug"
    VERBATIM)

enable_testing()
if(EXISTS ${CMAKE_SOURCE_DIR}/tools/CMakeLists.txt)
  add_subdirectory(tools)
endif()
if(EXISTS ${CMAKE_SOURCE_DIR}/bench/CMakeLists.txt)
  add_subdirectory(bench)
endif()
add_subdirectory(tests)
