# SPDX-License-Identifier: MIT
# Completion of vantle's commands for bash.
_vantle() {
  local current=${COMP_WORDS[COMP_CWORD]} words=
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    words='status why boost off pause report --help --version --test'
  else
    case ${COMP_WORDS[1]} in
    status) words='--json --follow' ;;
    report) words='--names' ;;
    why | boost) words=$(ps -u "$(id -u)" -o comm= 2>/dev/null | sort -u) ;;
    pause) words='0s 15m 30m 1h 2h' ;;
    esac
  fi
  local IFS=$' \t\n'
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _vantle vantle
