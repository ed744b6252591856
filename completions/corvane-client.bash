# Completion of corvane-client for bash: source this file, or put it into the folder of completions.

_corvane_client_words() { # what may follow the words of the call so far
  case "$*" in
    "" | help) echo accept candidates connect diag disable enable events help lb list log mode profile raw record \
      set status watch weights ;;
    mode) echo autoswitch event popup ;;
    profile) echo classic balanced ;;
    record) echo on off status ;;
    list) echo deny allow preferred ;;
    "list deny" | "list allow" | "list preferred") echo show set clear ;;
    weights) echo show set ;;
    lb) echo status on off pause resume weight ;;
    "lb on" | "lb weight") echo 1 2 ;;
    set) "${COMP_WORDS[0]}" set 2>/dev/null | awk 'NR > 1 { print $1 }' ;;
  esac
}

_corvane_client_options() { # those that the command takes
  case "$1" in
    connect) echo --adapter --wait --timeout ;;
    candidates) echo --adapter --all ;;
    "" | accept | disable | enable | list | mode | set | status | watch | weights) echo --adapter ;;
  esac
  echo --home --json --help
}

_corvane_client() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} i said=() words
  COMPREPLY=()
  case $before in
    --home) mapfile -t COMPREPLY < <(compgen -d -- "$word"); return ;;
    --timeout) return ;;
  esac
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      --home | --adapter | --timeout) ((++i)) ;;
      -*) ;;
      *) said+=("${COMP_WORDS[i]}") ;;
    esac
  done
  case "${said[*]}" in
    "list deny set" | "list allow set" | "list preferred set" | "weights set")
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return ;;
  esac
  if [ "$before" = --adapter ]; then
    words=$("${COMP_WORDS[0]}" status 2>/dev/null | awk '$1 == "Adapter" { print $2 }')
  elif [[ $word == -* ]]; then
    words=$(_corvane_client_options "${said[0]:-}")
  else
    words=$(_corvane_client_words "${said[@]}")
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _corvane_client corvane-client
