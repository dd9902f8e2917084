# cmake -DROOT=<source folder> -P CheckLayers.cmake
# Fails when a folder's DEPENDS line names a folder that is not below it, or
# when a source includes "folder/..." of a folder its own did not declare.
# tests/<x> may include what <x> may, <x> itself and support/; tests/fuzz
# what its DEPENDS line names.
cmake_minimum_required(VERSION 3.25)
include(${ROOT}/cmake/Layers.cmake)

set(level 0)
set(folders "")
foreach(layer IN LISTS QUILLOTONE_LAYERS)
  string(REPLACE " " ";" names "${layer}")
  foreach(name IN LISTS names)
    set(level_${name} ${level})
    list(APPEND folders ${name})
  endforeach()
  math(EXPR level "${level} + 1")
endforeach()

set(problems "")

# The folders named by the one DEPENDS line of <file>, into <out>.
macro(read_depends file out)
  set(${out} "")
  if(EXISTS ${file})
    file(STRINGS ${file} _lines REGEX "^[ \t]*DEPENDS[a-z ]*\\)?[ \t]*$")
    foreach(_line IN LISTS _lines)
      if(_line MATCHES "DEPENDS([a-z ]*)")
        string(STRIP "${CMAKE_MATCH_1}" _names)
        string(REPLACE " " ";" _names "${_names}")
        list(APPEND ${out} ${_names})
      endif()
    endforeach()
  endif()
endmacro()

# Every #include "folder/..." of the sources under <dir> must name one of <allowed>.
macro(check_includes dir allowed)
  file(GLOB_RECURSE _sources ${ROOT}/${dir}/*.h ${ROOT}/${dir}/*.cpp)
  foreach(_source IN LISTS _sources)
    file(STRINGS ${_source} _includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[A-Za-z0-9_]+/")
    foreach(_include IN LISTS _includes)
      string(REGEX MATCH "\"([A-Za-z0-9_]+)/" _ "${_include}")
      set(_target ${CMAKE_MATCH_1})
      if(_target IN_LIST folders OR _target STREQUAL "support")
        if(NOT _target IN_LIST ${allowed})
          file(RELATIVE_PATH _where ${ROOT} ${_source})
          string(STRIP "${_include}" _include)
          list(JOIN ${allowed} ", " _may)
          list(APPEND problems "${_where}: ${_include} (${dir} may include: ${_may})")
        endif()
      endif()
    endforeach()
  endforeach()
endmacro()

# Where each folder keeps its DEPENDS line.
function(depends_file name out)
  if(EXISTS ${ROOT}/src/${name}/CMakeLists.txt)
    set(${out} ${ROOT}/src/${name}/CMakeLists.txt PARENT_SCOPE)
  else()
    set(${out} ${ROOT}/${name}/CMakeLists.txt PARENT_SCOPE)
  endif()
endfunction()

foreach(name IN LISTS folders)
  depends_file(${name} file)
  read_depends(${file} deps)
  foreach(dep IN LISTS deps)
    if(NOT DEFINED level_${dep})
      list(APPEND problems "${name}: DEPENDS names ${dep}, which is no folder of the layers")
    elseif(NOT level_${dep} LESS level_${name})
      list(APPEND problems "${name}: DEPENDS names ${dep}, which is not below it")
    endif()
  endforeach()
  set(own_deps ${deps} ${name})
  if(EXISTS ${ROOT}/src/${name})
    check_includes(src/${name} own_deps)
  elseif(EXISTS ${ROOT}/${name})
    check_includes(${name} own_deps)
  endif()
  if(EXISTS ${ROOT}/tests/${name})
    set(test_deps ${deps} ${name} support)
    check_includes(tests/${name} test_deps)
  endif()
endforeach()

# The test support serves every test folder: it stays on the ground the tests share.
read_depends(${ROOT}/tests/support/CMakeLists.txt support_deps)
check_includes(tests/support support_deps)

# The fuzz targets read what the program's readers read, from any layer they
# name; nothing of the program includes them.
read_depends(${ROOT}/tests/fuzz/CMakeLists.txt fuzz_deps)
check_includes(tests/fuzz fuzz_deps)

# Any other test folder belongs to no layer.
file(GLOB test_folders LIST_DIRECTORIES true ${ROOT}/tests/*)
foreach(folder IN LISTS test_folders)
  get_filename_component(name ${folder} NAME)
  if(IS_DIRECTORY ${folder} AND NOT name IN_LIST folders AND NOT name MATCHES "^(support|fuzz)$")
    list(APPEND problems "tests/${name}: no folder of the layers has that name")
  endif()
endforeach()

if(problems)
  list(JOIN problems "\n  " text)
  message(FATAL_ERROR "Includes against the layers:\n  ${text}")
endif()
message(STATUS "Every include follows the layers.")
