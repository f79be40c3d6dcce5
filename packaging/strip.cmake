# Takes the symbols away from the programs and plug-ins of the package, and the section that names the compiler.
file(GLOB_RECURSE files LIST_DIRECTORIES false ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*)
foreach(file ${files})
  if(IS_SYMLINK ${file})
    continue()
  endif()
  file(READ ${file} magic LIMIT 4 HEX)
  if(magic STREQUAL "7f454c46")
    execute_process(COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note ${file}
                    COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
