# fish completion for kkm: the program itself knows what fits; where nothing does, a file may.
function __kkm_fitting
    set -l words (commandline -opc) (commandline -ct)
    $words[1] --complete $words[2..-1] 2>/dev/null
end
complete -c kkm -a '(__kkm_fitting)'
