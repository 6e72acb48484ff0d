# Bash completion for kovactl, which knows best itself: commands, options, items by name, path or
# ID, labels, families and machines. No device is asked.

_kovactl() {
  # shellcheck disable=SC2034 # all four are set by the line after
  local cur prev words cword
  _init_completion -n = || return

  # As the program will see them: without the shell's quoting.
  local unquoted=("${words[@]//[\\\"\']/}")
  local line IFS=$'\n'
  COMPREPLY=()
  while read -r line; do
    if [[ $line == @files ]]; then
      _filedir
      continue
    fi
    # The shell replaces what stands behind the last "=".
    [[ $cur == *=* ]] && line=${line#*=}
    # Inside quotes, which the shell will close, nothing needs another one.
    [[ $cur == [\"\']* ]] || printf -v line %q "$line"
    COMPREPLY+=("$line")
  done < <("${words[0]/#\~/$HOME}" complete -- "=${unquoted[cword]}" "${unquoted[@]:1:cword-1}" \
    2>/dev/null)
}

complete -F _kovactl kovactl
