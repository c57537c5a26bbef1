# Installs the build tree into a scratch prefix, then builds and runs a C
# consumer through pkg-config and through find_package(vantaro).
# Inputs: BUILD_DIR, SOURCE_DIR, WORK_DIR, CC, PKG_CONFIG, GENERATOR.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
run(${PKG_CONFIG} --cflags --libs vantaro)
string(STRIP "${last_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CC} -std=c99 -Wall -Werror ${SOURCE_DIR}/consumer.c ${flags} -Wl,-rpath,${prefix}/lib
    -o ${WORK_DIR}/pc_consumer)
run(${WORK_DIR}/pc_consumer)

run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/consumer -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_C_COMPILER=${CC})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run(${WORK_DIR}/consumer/consumer)
run(${WORK_DIR}/consumer/consumer_static)
