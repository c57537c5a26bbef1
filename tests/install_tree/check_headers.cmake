# Compiles each public header alone: every .h as C99 and as C++20, every .hpp
# as C++20, warnings as errors, so no header leans on an earlier include.
# Inputs: INCLUDE_DIR, CC, CXX, WORK_DIR.
function(compile_alone header compiler language standard)
  get_filename_component(stem ${header} NAME)
  set(source ${WORK_DIR}/${stem}.${language}.in)
  file(WRITE ${source} "#include \"${header}\"\n")
  execute_process(COMMAND ${compiler} -x ${language} -std=${standard} -Wall -Wextra -pedantic -Werror
                          -I${INCLUDE_DIR} -fsyntax-only ${source}
                  RESULT_VARIABLE result ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${header} alone does not compile as ${standard}:\n${err}")
  endif()
endfunction()

file(MAKE_DIRECTORY ${WORK_DIR})
file(GLOB headers RELATIVE ${INCLUDE_DIR} ${INCLUDE_DIR}/vantaro/*.h ${INCLUDE_DIR}/vantaro/*.hpp)
if(NOT headers)
  message(FATAL_ERROR "no public headers under ${INCLUDE_DIR}")
endif()
foreach(header ${headers})
  compile_alone(${header} ${CXX} c++ c++20)
  if(header MATCHES "\\.h$")
    compile_alone(${header} ${CC} c c99)
  endif()
endforeach()
