# Installs the build tree into a fresh prefix and builds a consumer against it
# twice: with find_package(OracleCloudSDKWrapper) and with pkg-config.
#   cmake -DBUILD_DIR=... -DWORK_DIR=... -DCONSUMER_DIR=... -DCXX=... [-DCONSUMER_FLAGS=...] -P InstallTest.cmake
# CONSUMER_FLAGS: compiler flags a consumer needs too (a library built with
# sanitizers needs their runtime loaded first, by the program).
foreach(v BUILD_DIR WORK_DIR CONSUMER_DIR CXX)
  if(NOT DEFINED ${v})
    message(FATAL_ERROR "${v} is not set")
  endif()
endforeach()

function(run_step what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${what} failed (${rc}):\n${out}\n${err}")
  endif()
  set(STEP_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

run_step("cmake --install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# What the package promises, wherever GNUInstallDirs put the library.
file(GLOB_RECURSE _config ${prefix}/*/OracleCloudSDKWrapperConfig.cmake)
file(GLOB_RECURSE _version ${prefix}/*/OracleCloudSDKWrapperConfigVersion.cmake)
file(GLOB_RECURSE _pc ${prefix}/*/pkgconfig/oraclecloudsdkwrapper.pc)
file(GLOB_RECURSE _lib ${prefix}/*/liboraclecloudsdkwrapper.so)
foreach(f _config _version _pc _lib)
  if(NOT ${f})
    message(FATAL_ERROR "the installed tree lacks ${f}")
  endif()
endforeach()
foreach(f bin/ocw bin/ocw-emulator include/oraclecloud/OracleCloudWrapper.h include/oraclecloud/OracleCloudRecords.h)
  if(NOT EXISTS ${prefix}/${f})
    message(FATAL_ERROR "the installed tree lacks ${f}")
  endif()
endforeach()
# The man page and the bash completion that ocw wrote of itself at build time.
file(GLOB_RECURSE _man ${prefix}/ocw.1)
file(GLOB_RECURSE _completion ${prefix}/ocw)
list(FILTER _man INCLUDE REGEX "/man/man1/ocw\\.1$")
list(FILTER _completion INCLUDE REGEX "/bash-completion/completions/ocw$")
foreach(f _man _completion)
  if(NOT ${f})
    message(FATAL_ERROR "the installed tree lacks ${f}")
  endif()
endforeach()
file(READ ${_completion} _completion_text)
if(NOT _completion_text MATCHES "complete -F _ocw ocw" OR NOT _completion_text MATCHES "snapshot")
  message(FATAL_ERROR "the installed bash completion does not complete ocw's commands")
endif()
# Internal headers stay out of the public tree.
file(GLOB_RECURSE _internal ${prefix}/include/*/PlatformConfig.h ${prefix}/include/*/HttpClient.h)
if(_internal)
  message(FATAL_ERROR "internal headers were installed: ${_internal}")
endif()
get_filename_component(libdir ${_lib} DIRECTORY)
get_filename_component(pcdir ${_pc} DIRECTORY)

# 1. CMake package and imported target.
run_step("configure the find_package consumer" ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake-consumer
         -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${CONSUMER_FLAGS}")
run_step("build the find_package consumer" ${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-consumer)
run_step("run the find_package consumer" ${WORK_DIR}/cmake-consumer/consumer)
if(NOT STEP_OUTPUT MATCHES "consumer ok")
  message(FATAL_ERROR "find_package consumer said: ${STEP_OUTPUT}")
endif()

# 2. pkg-config, from a copy of the tree elsewhere: the .pc file finds its
# prefix from its own place.
set(moved ${WORK_DIR}/moved)
file(COPY ${prefix}/ DESTINATION ${moved})
file(RELATIVE_PATH pcrel ${prefix} ${pcdir})
file(RELATIVE_PATH librel ${prefix} ${libdir})
set(ENV{PKG_CONFIG_PATH} ${moved}/${pcrel})
run_step("pkg-config" pkg-config --cflags --libs oraclecloudsdkwrapper)
string(STRIP "${STEP_OUTPUT}" flags)
if(NOT flags MATCHES "${moved}")
  message(FATAL_ERROR "pkg-config flags do not point into the moved tree: ${flags}")
endif()
separate_arguments(flags UNIX_COMMAND "${flags} ${CONSUMER_FLAGS}")
run_step("build the pkg-config consumer" ${CXX} -std=c++17 -o ${WORK_DIR}/pc-consumer ${CONSUMER_DIR}/main.cpp ${flags}
         -Wl,-rpath,${moved}/${librel})
run_step("run the pkg-config consumer" ${WORK_DIR}/pc-consumer)
if(NOT STEP_OUTPUT MATCHES "consumer ok")
  message(FATAL_ERROR "pkg-config consumer said: ${STEP_OUTPUT}")
endif()

# 3. The installed programs start and find the installed library.
run_step("installed ocw" ${prefix}/bin/ocw --help)
run_step("installed ocw-emulator" ${prefix}/bin/ocw-emulator --help)

file(REMOVE_RECURSE ${WORK_DIR})
message(STATUS "install test passed")
