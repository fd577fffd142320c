# CheckInstall.cmake -- installs the built libraries into a temporary prefix and builds a small game
# against that copy twice: once with find_package(ostrum_gl CONFIG), once with pkg-config.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
foreach(f lib/libostrum_core.so lib/libostrum_gl.so include/ostrum_core/ostrum_core.h
          include/ostrum_gl/ostrum_gl.h lib/cmake/ostrum_gl/ostrum_glConfig.cmake
          lib/pkgconfig/ostrum_core.pc lib/pkgconfig/ostrum_gl.pc)
  if(NOT EXISTS ${prefix}/${f})
    message(FATAL_ERROR "not installed: ${f}")
  endif()
endforeach()

# find_package
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/install/consumer -B ${WORK_DIR}/cmake_build
    -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake_build)
set(ENV{LD_LIBRARY_PATH} ${prefix}/lib)
run(${WORK_DIR}/cmake_build/consumer)
if(NOT last_output MATCHES "handled consumer: installed copy works\nlength 5")
  message(FATAL_ERROR "the CMake-built consumer printed: ${last_output}")
endif()

# pkg-config
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
run(pkg-config --cflags --libs ostrum_gl)
string(STRIP "${last_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(c++ -std=c++17 ${SOURCE_DIR}/tests/install/consumer/main.cpp -o ${WORK_DIR}/consumer_pc ${flags})
run(${WORK_DIR}/consumer_pc)
if(NOT last_output MATCHES "handled consumer: installed copy works\nlength 5")
  message(FATAL_ERROR "the pkg-config-built consumer printed: ${last_output}")
endif()
message(STATUS "installed copy builds with find_package and with pkg-config")
