# fish completion for kovactl, which knows best itself: see kovactl.bash. No device is asked.

function __kovactl_words
    set -l before (commandline -opc)
    set -l program $before[1]
    set -e before[1]
    # As the program will see it: without the shell's quoting.
    set -l current (commandline -ct | string replace -ra '["\'\\\\]' '')
    for line in ($program complete -- "=$current" $before 2>/dev/null)
        if test "$line" = @files
            # An option and its file are one word, which is completed whole.
            set -l option (string match -r -- '^--[^=]*=' "$current")
            for file in (__fish_complete_path (string replace -r -- '^--[^=]*=' '' "$current"))
                echo "$option$file"
            end
        else
            echo $line
        end
    end
end

complete -c kovactl -f -a '(__kovactl_words)'
