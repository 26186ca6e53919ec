# Runs PROGRAM in the fresh FOLDER and compares its standard output, line by line, with the file EXPECTED. There, <name>
# stands for any text that is not empty, such as <time>, and a line <...> for any number of lines.
cmake_minimum_required(VERSION 3.21)

file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
list(REMOVE_ITEM PROGRAM "")
execute_process(COMMAND ${PROGRAM} WORKING_DIRECTORY ${FOLDER} RESULT_VARIABLE status OUTPUT_VARIABLE output)
string(REPLACE "\r" "" output "${output}")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "The program ended with ${status}. It printed:\n${output}")
endif()

file(READ ${EXPECTED} pattern)
string(REGEX REPLACE "([][+.*()^$?|\\])" "\\\\\\1" pattern "${pattern}")
string(REGEX REPLACE "<\\\\\\.\\\\\\.\\\\\\.>\n" "([^\n]*\n)*" pattern "${pattern}")
string(REGEX REPLACE "<[a-z ]+>" "[^\n]+" pattern "${pattern}")
if(NOT output MATCHES "^${pattern}$")
  file(READ ${EXPECTED} expected)
  message(FATAL_ERROR "Expected:\n${expected}\nPrinted:\n${output}")
endif()
