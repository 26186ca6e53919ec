# cmake -P checkJson.cmake file: fails unless the file is well-formed JSON.
file(READ ${CMAKE_ARGV3} text)
string(JSON type ERROR_VARIABLE error TYPE "${text}")
if(error)
  message(FATAL_ERROR "${CMAKE_ARGV3}: ${error}")
endif()
