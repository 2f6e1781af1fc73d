# Runs a program and fails unless it ends with the exit code expected and its output matches; a
# leading ^ stands for the begin of any line.
#
#   cmake -P RunProgram.cmake -- CODE REGEX PROGRAM [ARGUMENT ...]
set(command "")
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(i RANGE 6 ${last})
    list(APPEND command "${CMAKE_ARGV${i}}")
endforeach()
execute_process(COMMAND ${command} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE errors)
message("${output}${errors}")
if(NOT code STREQUAL CMAKE_ARGV4)
    message(FATAL_ERROR "the exit code is ${code}, not ${CMAKE_ARGV4}")
endif()
string(REGEX REPLACE "^\\^" "\n" pattern "${CMAKE_ARGV5}")
if(NOT "\n${output}${errors}" MATCHES "${pattern}")
    message(FATAL_ERROR "no line of the output matches '${CMAKE_ARGV5}'")
endif()
