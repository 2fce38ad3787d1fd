#compdef vantle
# SPDX-License-Identifier: MIT
# Completion of vantle's commands for zsh.

local -a subcommands options
subcommands=(
  'status:what is slowed, and what is left alone'
  'why:why an app is slowed, or why it is not'
  'boost:start a Boost of the app in front, or of another one'
  'off:turn the Boost off'
  'pause:no automatic Boost for so long'
  'report:what is needed to report a problem'
)
options=(
  '--help:show the commands'
  '--version:show the version'
  '--test:measure for 8 seconds whether slowing works here'
)

if (( CURRENT == 2 )); then
  _describe -t commands command subcommands -- options
  return
fi
case $words[2] in
  status)
    options=('--json:as one JSON object in a line' '--follow:again each time that something changes')
    _describe option options
    ;;
  report)
    options=('--names:with the names and identifiers of apps')
    _describe option options
    ;;
  why|boost)
    local -a names
    names=(${(fu)"$(vantle status 2>/dev/null | sed -nE 's/^  (.*) \([0-9]+\): .*/\1/p')"})
    _wanted names expl 'app' compadd -M 'm:{[:lower:][:upper:]}={[:upper:][:lower:]}' -a names
    ;;
  pause)
    _wanted durations expl 'duration' compadd -V durations 0s 15m 30m 1h 2h
    ;;
esac
