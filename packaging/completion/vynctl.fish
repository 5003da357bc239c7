# Completion of vynctl in fish: vynctl itself says what may come next.
function __vynctl_complete
    set -l before (commandline --tokenize --cut-at-cursor --current-process)
    set -l current (commandline --cut-at-cursor --current-token | string unescape)
    for line in (command $before[1] __complete $before[2..] "$current" 2>/dev/null)
        if test "$line" = :files
            __fish_complete_path "$current"
        else
            echo $line
        end
    end
end
complete --command vynctl --no-files --keep-order --arguments '(__vynctl_complete)'
