# bash completion for rzcrypto: commands, verbs and options as its own --help lists them.
_rzcrypto() {
  local current=${COMP_WORDS[COMP_CWORD]} path=() word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [[ $word == -* ]] || path+=("$word")
  done
  local help
  help=$("${COMP_WORDS[0]}" "${path[@]:0:2}" --help 2>/dev/null || "${COMP_WORDS[0]}" "${path[@]:0:1}" --help 2>/dev/null)
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(grep -oE -- '--?[a-z][a-z-]*' <<<"$help")" -- "$current")
  elif ((${#path[@]} < 2)); then
    mapfile -t COMPREPLY < <(compgen -W "$(sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p' <<<"$help")" -- "$current")
  fi
}
complete -o default -o bashdefault -F _rzcrypto rzcrypto
