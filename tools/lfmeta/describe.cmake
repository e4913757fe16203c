# Run by the build: writes into the folder OUT the completions that LFMETA, the tool, prints, and the
# man page PAGE with the tool's commands and options in the places that it marks.
foreach(form bash zsh synopsis commands)
  execute_process(COMMAND ${LFMETA} --describe ${form}
    OUTPUT_VARIABLE ${form} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(READ ${PAGE} page)
string(REPLACE ".\\\" SYNOPSIS\n" "${synopsis}" page "${page}")
string(REPLACE ".\\\" COMMANDS\n" "${commands}" page "${page}")
file(WRITE ${OUT}/lfmeta.1 "${page}")
file(WRITE ${OUT}/lfmeta "${bash}")
file(WRITE ${OUT}/_lfmeta "${zsh}")
