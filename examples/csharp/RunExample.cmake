# Runs the C# example on a fresh demo database and checks its answers.
file(REMOVE ${DB})
execute_process(COMMAND ${CLI} init-db ${DB} --demo OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
# Mono looks next to the program first: the library under test, not any
# other copy the machine may have.
get_filename_component(exe_dir ${EXE} DIRECTORY)
file(CREATE_LINK ${LIBRARY} ${exe_dir}/libkavrin.so SYMBOLIC)
execute_process(COMMAND ${MONO} ${EXE} ${DB} OUTPUT_VARIABLE output RESULT_VARIABLE status)
message("${output}")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "form-host.exe exited with ${status}")
endif()
foreach(expected
    "name: +刨花板 18mm\n"
    "unit price: +86.50\n"
    "warehouse: +01\n"
    "entry now: +' 01             原料库'\n"
    "free items: +True, True\n"
    "last keep date: +2026-03-31\n"
    "stores: +01             原料库 \\| 02             成品库 \\| 03             车间库\n"
    "message box: +该存货没有找到！\n"
    "failed call: +error -2147217900: ")
  if(NOT output MATCHES "${expected}")
    message(FATAL_ERROR "the example's output lacks \"${expected}\"")
  endif()
endforeach()
