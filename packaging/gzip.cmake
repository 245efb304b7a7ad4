# Compresses IN into OUT as Debian wants it: best compression, no name or time inside, so the
# same input always makes the same file.
execute_process(COMMAND gzip -9 -n -c INPUT_FILE "${IN}" OUTPUT_FILE "${OUT}" RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  file(REMOVE "${OUT}")
  message(FATAL_ERROR "gzip failed on ${IN}: ${status}")
endif()
