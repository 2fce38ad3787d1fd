# SPDX-License-Identifier: MIT
# The scripts refuse what they do not know, say how they are called, and begin nothing.
# -D SCRIPTS=FOLDER -D WORK=FOLDER

function(expect_refusal text)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors TIMEOUT 60)
  if(status EQUAL 0 OR NOT errors MATCHES "${text}" OR NOT output STREQUAL "")
    message(SEND_ERROR "${ARGN}: status ${status}, not \"${text}\":\n${output}${errors}")
  endif()
endfunction()

foreach(call "build;--bogus" "check-darwin;--bogus" "coverage;bogus" "debian-package;--bogus" "fuzz;bogus" "lint;--bogus" "mutate;bogus"
             "on-debian;99" "packages"
             "packages;bogus" "real-apps;--bogus" "run;--desktop" "run;--desktop;bogus" "soak;bogus" "test;--bogus"
             "try-package;--bogus" "try-recipes;--bogus")
  list(POP_FRONT call name)
  expect_refusal("usage: " ${SCRIPTS}/${name} ${call})
endforeach()

foreach(name "C#" "a\\b" "a\"b" "a[b" "a]b" "a|b" "\${a}")
  set(folder "${WORK}/${name}")
  execute_process(COMMAND mkdir -p "${folder}" COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND cp -R "${SCRIPTS}" "${folder}/scripts" COMMAND_ERROR_IS_FATAL ANY)
  expect_refusal("cannot be built in a folder" "${folder}/scripts/build")
endforeach()
file(REMOVE_RECURSE "${WORK}")
