# SPDX-License-Identifier: MIT
# Completion of vantle's commands for bash.
_vantle() {
  local current=${COMP_WORDS[COMP_CWORD]} words='' app
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    words='status why boost off pause report --help --version --test'
  else
    case ${COMP_WORDS[1]} in
    status) words='--json --follow' ;;
    report) words='--names' ;;
    pause) words='0s 15m 30m 1h 2h' ;;
    why | boost)
      # Names may have spaces, and are meant in any case of the letters. Behind a quote the rest is taken as it is.
      local quote=''
      [[ $current != [\"\']* ]] || quote=${current:0:1} current=${current:1}
      while read -r app; do
        if [[ $quote == \' ]]; then
          app=${app//\'/\'\\\'\'}
        elif [[ $quote ]]; then
          app=$(sed 's/[\\"$`]/\\&/g' <<<"$app")
        else
          printf -v app %q "$app"
        fi
        [[ ${app,,} != "${current,,}"* ]] || COMPREPLY+=("$quote$app$quote")
      done < <(vantle status 2>/dev/null | sed -nE 's/^  (.*) \([0-9]+\): .*/\1/p' | sort -u)
      return
      ;;
    esac
  fi
  local IFS=$' \t\n'
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _vantle vantle
