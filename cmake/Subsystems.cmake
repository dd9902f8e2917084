include(${CMAKE_CURRENT_LIST_DIR}/Layers.cmake)

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

# quillotone_depends(<target> DEPENDS <folder> ...): links the folders'
# libraries. Keep DEPENDS and its folders on one line of their own: the
# layering test reads that line.
function(quillotone_depends target)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  foreach(folder IN LISTS ARG_DEPENDS)
    if(TARGET quillotone_${folder})
      target_link_libraries(${target} PUBLIC quillotone_${folder})
    endif()
  endforeach()
endfunction()

# quillotone_subsystem(<name> DEPENDS <folder> ... [LIBS <lib> ...]):
# one static library per src folder, every .cpp of the folder.
function(quillotone_subsystem name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;LIBS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  add_library(quillotone_${name} STATIC ${sources})
  target_include_directories(quillotone_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  quillotone_depends(quillotone_${name} DEPENDS ${ARG_DEPENDS})
  target_link_libraries(quillotone_${name} PUBLIC ${ARG_LIBS})
endfunction()
