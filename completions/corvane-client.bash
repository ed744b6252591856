# Completion of corvane-client for bash: source this file, or put it into the folder of completions.

_corvane_client_words() { # what may follow the words of the call so far
  case "$1 $2" in
    "mode "*) echo autoswitch event popup ;;
    "list deny" | "list allow" | "list preferred") echo show set clear ;;
    "list "*) echo deny allow preferred ;;
    "weights "*) echo show set ;;
    "lb "*) echo on off pause resume weight ;;
    "set "*) "${COMP_WORDS[0]}" set 2>/dev/null | awk 'NR > 1 { print $1 }' ;;
    "connect "*) echo --wait --timeout ;;
    "candidates "*) echo --all ;;
    "help " | " ") echo accept candidates connect diag disable enable events help lb list log mode raw \
      set status watch weights ;;
  esac
}

_corvane_client() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} i said=()
  COMPREPLY=()
  case $before in
    --home) mapfile -t COMPREPLY < <(compgen -d -- "$word"); return ;;
    --adapter | --timeout) return ;;
  esac
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      --home | --adapter | --timeout) ((++i)) ;;
      -*) ;;
      *) said+=("${COMP_WORDS[i]}") ;;
    esac
  done
  if [ "$before" = set ] && { [ "${said[0]:-}" = list ] || [ "${said[0]:-}" = weights ]; }; then
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  elif [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "--adapter --home --json --help
      $(_corvane_client_words "${said[0]:-}" "${said[1]:-}" | tr ' ' '\n' | grep -e '^--')" -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -W \
      "$(_corvane_client_words "${said[0]:-}" "${said[1]:-}" | tr ' ' '\n' | grep -v -e '^--')" -- "$word")
  fi
}

complete -F _corvane_client corvane-client
