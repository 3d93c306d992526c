# Include roots: includes are written from the source root ("config/ui_config.h"), and
# each folder's library gets, as its only include directory, a root of its own in the
# build tree that holds links to just the folders it may include. A header of any other
# folder is then not found.

set(OZDK_INCLUDE_ROOTS ${CMAKE_BINARY_DIR}/include_roots)
file(REMOVE_RECURSE ${OZDK_INCLUDE_ROOTS})

# ozdk_include_root(TARGET FOLDER...): the target's include directory, for its own
# sources and for those that link it, becomes a root with a symbolic link to each FOLDER
# (relative to the source root, such as "device/protocol"). Where the host cannot make
# symbolic links (Windows without that right), the folder is copied instead and
# ozdk_refresh_include_roots copies what changed again before each build.
function(ozdk_include_root target)
  set(root ${OZDK_INCLUDE_ROOTS}/${target})
  foreach(folder IN LISTS ARGN)
    get_filename_component(parent ${root}/${folder} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${root}/${folder} RESULT result SYMBOLIC)
    if(NOT result STREQUAL "0")
      set(copy "file(COPY \"${CMAKE_SOURCE_DIR}/${folder}/\" DESTINATION \"${root}/${folder}\")\n")
      cmake_language(EVAL CODE "${copy}")
      file(APPEND ${OZDK_INCLUDE_ROOTS}/refresh.cmake "${copy}")
      if(NOT TARGET ozdk_refresh_include_roots)
        add_custom_target(ozdk_refresh_include_roots
                          COMMAND ${CMAKE_COMMAND} -P ${OZDK_INCLUDE_ROOTS}/refresh.cmake)
      endif()
      add_dependencies(${target} ozdk_refresh_include_roots)
    endif()
  endforeach()
  target_include_directories(${target} PUBLIC ${root})
endfunction()
