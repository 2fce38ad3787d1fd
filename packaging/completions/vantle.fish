# SPDX-License-Identifier: MIT
# Completion of vantle's commands for fish.
complete -c vantle -f
complete -c vantle -n __fish_use_subcommand -a status -d 'What is slowed, and what is left alone'
complete -c vantle -n __fish_use_subcommand -a why -d 'Why an app is slowed, or why it is not'
complete -c vantle -n __fish_use_subcommand -a boost -d 'Start a Boost of the app in front, or of another one'
complete -c vantle -n __fish_use_subcommand -a off -d 'Turn the Boost off'
complete -c vantle -n __fish_use_subcommand -a pause -d 'No automatic Boost for so long'
complete -c vantle -n __fish_use_subcommand -a report -d 'What is needed to report a problem'
complete -c vantle -n __fish_use_subcommand -l help -d 'Show the commands'
complete -c vantle -n __fish_use_subcommand -l version -d 'Show the version'
complete -c vantle -n __fish_use_subcommand -l test -d 'Measure for 8 seconds whether slowing works here'
complete -c vantle -n '__fish_seen_subcommand_from status' -l json -d 'As one JSON object in a line'
complete -c vantle -n '__fish_seen_subcommand_from status' -l follow -d 'Again each time that something changes'
complete -c vantle -n '__fish_seen_subcommand_from report' -l names -d 'With the names and identifiers of apps'
# One app is all they take.
complete -c vantle -n '__fish_seen_subcommand_from why boost; and test (count (commandline -opc)) -eq 2' -a "(vantle status 2>/dev/null | string replace --regex --filter '^  (.*) \(\d+\): .*' '\$1')"
complete -c vantle -n '__fish_seen_subcommand_from pause; and test (count (commandline -opc)) -eq 2' -a '0s 15m 30m 1h 2h'
