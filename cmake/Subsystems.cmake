# Adds <parent>/<name> for each name whose folder holds a CMakeLists.txt.
function(quillotone_add_folders parent)
  foreach(name IN LISTS ARGN)
    if(parent)
      set(dir ${parent}/${name})
    else()
      set(dir ${name})
    endif()
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/CMakeLists.txt)
      add_subdirectory(${dir})
    endif()
  endforeach()
endfunction()

# One static library per subsystem folder: every .cpp of the folder.
function(quillotone_subsystem name)
  cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  add_library(quillotone_${name} STATIC ${sources})
  target_include_directories(quillotone_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(quillotone_${name} PUBLIC ${ARG_LIBS})
  # The subsystems call each other both ways (the main window sends, the send
  # pipeline drives the main window), so the linker walks the cycle more than twice.
  set_property(TARGET quillotone_${name} PROPERTY LINK_INTERFACE_MULTIPLICITY 3)
endfunction()
