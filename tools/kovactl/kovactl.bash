# Bash completion for kovactl: commands, options, machine descriptions and family names.

_kovactl() {
  local cur prev words cword
  _init_completion || return

  local commands="list capability get set watch metrics senml record diff report"
  local command="" word
  for word in "${words[@]:1:cword-1}"; do
    if [[ " $commands " == *" $word "* ]]; then
      command=$word
      break
    fi
  done

  case $prev in
    --from)
      _filedir json
      return
      ;;
    --module)
      _filedir so
      return
      ;;
    --output)
      _filedir
      return
      ;;
    --family)
      # Families with a blank in their name are completed with it escaped.
      local IFS=$'\n'
      COMPREPLY=($(compgen -W $'SDRAM\nSMART\\\\ BATTERY\nTRK-7000\nHardware\\\\ Monitor\nPoE\nPIC\nGSensor' -- "$cur"))
      return
      ;;
    --interval | --count | --for | --base-name)
      return
      ;;
    --simulate)
      _kovactl_machines
      # A machine may follow, or nothing: commands are offered as well.
      ;;
  esac

  local options="--help --module --simulate"
  case $command in
    "") options+=" --version" ;;
    list) options+=" --family --json" ;;
    capability) options+=" --compact" ;;
    get) options+=" --value-only --json" ;;
    set) options+=" --json" ;;
    watch) options+=" --interval --count --json" ;;
    metrics) options+=" --openmetrics --output" ;;
    senml) options+=" --base-name --compact" ;;
    record) options+=" --family --interval --count --for --redact" ;;
    diff) options+=" --all --json" ;;
    report) options+=" --for --from --interval" ;;
  esac
  if [[ $cur == -* ]]; then
    COMPREPLY=($(compgen -W "$options" -- "$cur"))
  elif [[ $command == record ]]; then
    _filedir json
  elif [[ $command == report ]]; then
    _filedir html
  elif [[ $command == diff ]]; then
    _filedir json
    COMPREPLY+=($(compgen -W "now" -- "$cur"))
  elif [[ -z $command ]]; then
    COMPREPLY+=($(compgen -W "$commands" -- "$cur"))
  fi
}

# The shipped machine descriptions by name, and JSON files by path.
_kovactl_machines() {
  local folder names="" file
  folder=$(dirname "$(type -P kovactl 2>/dev/null)" 2>/dev/null)/../share/kova-iot/machines
  for file in "$folder"/*.json; do
    [[ -e $file ]] && names+=" $(basename "$file" .json)"
  done
  _filedir json
  COMPREPLY+=($(compgen -W "$names" -- "$cur"))
}

complete -F _kovactl kovactl
