# Completion of vynctl in bash: vynctl itself says what may come next.
_vynctl() {
  local current=${COMP_WORDS[COMP_CWORD]} quote='' word help typed=()
  # Words are divided at "=" too, and still have their quotes and backslashes.
  for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    [[ $word == "=" ]] || typed+=("${word//[\\\'\"]/}")
  done
  case $current in
    =) current='' typed+=('') ;;
    [\'\"]*) quote=${current:0:1} current=${current:1} ;;
    *) current=${current//\\/} ;;
  esac
  COMPREPLY=()
  while IFS=$'\t' read -r word help; do
    if [[ $word == :files ]]; then
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
    elif [[ $word == "$current"* ]]; then
      [[ -n $quote ]] || printf -v word %q "$word"
      COMPREPLY+=("$word")
    fi
  done < <("$1" __complete "${typed[@]}" 2>/dev/null)
}
complete -F _vynctl vynctl
