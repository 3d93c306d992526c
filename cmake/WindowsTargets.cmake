# The Windows build: the plug-in DLL, its tests under Wine, and the tools.

add_compile_definitions(UNICODE _UNICODE NOMINMAX _WIN32_WINNT=0x0601 WINVER=0x0601)
set(OZDK_WARNINGS -Wall -Wextra -Wno-cast-function-type -Wno-missing-field-initializers)

# Everything runs under Wine without the MinGW runtime DLLs.
set(OZDK_STATIC_LINK -static -static-libgcc -static-libstdc++)

set(OZDK_SYSTEM_LIBRARIES
    winspool comctl32 comdlg32 shell32 shlwapi version ws2_32 ole32 oleaut32 uuid
    gdi32 msimg32 user32 advapi32 kernel32)

add_library(ozdk_protocol STATIC ${OZDK_PROTOCOL_SOURCES} ${CMAKE_SOURCE_DIR}/config/ui_config.h)
set_target_properties(ozdk_protocol PROPERTIES LINKER_LANGUAGE CXX)
target_include_directories(ozdk_protocol PUBLIC ${CMAKE_SOURCE_DIR})
target_compile_options(ozdk_protocol PRIVATE ${OZDK_WARNINGS})

file(GLOB OZDK_PRODUCT_SOURCES CONFIGURE_DEPENDS
     ${CMAKE_SOURCE_DIR}/base/*.cpp
     ${CMAKE_SOURCE_DIR}/frame/*.cpp
     ${CMAKE_SOURCE_DIR}/config/*.cpp
     ${CMAKE_SOURCE_DIR}/device/*.cpp
     ${CMAKE_SOURCE_DIR}/printer_ui/*.cpp
     ${CMAKE_SOURCE_DIR}/document_ui/*.cpp)
list(REMOVE_ITEM OZDK_PRODUCT_SOURCES ${CMAKE_SOURCE_DIR}/frame/dll_entry.cpp)

# The product's code as a library: linked into the DLL, and into the tests that call
# its routines directly.
add_library(ozdkrnui_impl STATIC ${OZDK_PRODUCT_SOURCES})
target_include_directories(ozdkrnui_impl PUBLIC ${CMAKE_SOURCE_DIR})
target_compile_options(ozdkrnui_impl PRIVATE ${OZDK_WARNINGS})
target_link_libraries(ozdkrnui_impl PUBLIC ozdk_protocol ${OZDK_SYSTEM_LIBRARIES})

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
