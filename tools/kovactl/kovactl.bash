# Bash completion for kovactl, which knows best itself: commands, options, items by name, path or
# ID, labels, families, machines, and where files belong. No device is asked.

_kovactl() {
  # shellcheck disable=SC2034 # all four are set by the line after
  local cur prev words cword
  _init_completion -n = || return

  # As the program will see them: without the shell's quoting.
  local unquoted=("${words[@]//[\\\"\']/}")
  local line whole IFS=$'\n'
  COMPREPLY=()
  while read -r line; do
    if [[ $line == @files ]]; then
      whole=$cur
      cur=${cur#--*=}
      _filedir
      cur=$whole
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
