# Completion of trevolt-cli for fish, made by ./dev pages of the program's own options.

function __trevolt_cli_calls --description 'Whether the first word is this one, or still missing where none is given'
    set -l words (commandline -opc)
    test "$words[2]" = "$argv[1]"
end

complete -c trevolt-cli -f

complete -c trevolt-cli -n '__trevolt_cli_calls' -a rotate -d 'Turn coefficient files into another folder'
complete -c trevolt-cli -n '__trevolt_cli_calls' -a compose -d 'Put cabinets\' files into a file of the whole screen'
complete -c trevolt-cli -n '__trevolt_cli_calls' -a crop -d 'Cut a rectangle, or all cabinets, out of a file'
complete -c trevolt-cli -n '__trevolt_cli_calls' -a convert -d 'Make coefficient files into other kinds, and to and from NumPy\'s arrays'
complete -c trevolt-cli -n '__trevolt_cli_calls' -a info -d 'Tell what coefficient files hold'
complete -c trevolt-cli -n '__trevolt_cli_calls' -a diff -d 'Compare coefficient files, of any kinds, or folders of them'
complete -c trevolt-cli -n '__trevolt_cli_calls' -a preview -d 'Show coefficient files in a picture'
complete -c trevolt-cli -n '__trevolt_cli_calls' -a verify -d 'Compare the files of a manifest with their SHA-256 sums'
complete -c trevolt-cli -n '__trevolt_cli_calls' -a demo -d 'Write a small made-up wall of cabinets into a folder'
complete -c trevolt-cli -n '__trevolt_cli_calls' -s h -l help -d 'Print this help and do nothing else'
complete -c trevolt-cli -n '__trevolt_cli_calls' -l version -d 'Print the version and do nothing else'

complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -F
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -s a -l angle -r -f -a '90 180 270' -d 'Clockwise turn in degrees, with or without a degree sign; -90 and -180 are 270 and 180'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l angles -r -F -d 'CSV file with a file and its angle a row, for files that are mounted in different ways; * stands for all without a row, and angle 0 copies'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -s s -l size -r -f -d 'Size of every map in pixels; larger files are cut, smaller ones stand on defaults'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l lenient -d 'Also write what could be read of files that are damaged'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l keep-extras -d 'Keep the extra words, the owner and the origin of word files, which are lost otherwise'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l wall -r -f -d 'Size of the wall in whose pixels kept origins are turned; without it they stay as they are'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -s r -l recursive -d 'Also turn what lies in folders of the source folders; the target gets the same folders'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l screen -d 'The source is one whole-screen file; refuse any other number'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l shard -r -f -d 'Take every N-th file, from the I-th on, so that N machines share a run'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l max-file-size -r -f -d 'Bytes that a file may have, or as 500M or 2G; larger ones fail'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l max-size -r -f -d 'Size in pixels that a file may have; larger ones fail'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l overwrite -d 'Replace outputs that exist; without it they are errors'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l skip-existing -d 'Leave outputs that exist, and do not turn their files'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l suffix -r -f -d 'What stands in names of outputs in place of the angle, as cw in Cab_01-cw.9fcoef'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l keep-times -d 'Give outputs the time at which their sources were last written'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l verify -d 'Read each output back from the disk and compare it before it gets its name'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l manifest -r -F -d 'New file for the SHA-256 sums of the files turned and written, as sha256sum takes them; check them with the command verify'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l no-sync -d 'Do not wait until the outputs are on the disk: quicker, but a power cut may cost them'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -s j -l jobs -r -f -d 'Threads that turn files, or share one large file, 1 to 256'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l max-memory -r -f -d 'Memory for pixels, in bytes or as 500M or 2G; what does not fit fails'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -s n -l dry-run -d 'Do all but write: the same plan and the same lines, but for what only writing shows'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l list -d 'Print the files that a run would take, one a line, as they open and with nothing escaped, and turn none; then neither an angle nor, for one SOURCE, a TARGET is needed'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l report -r -F -d 'Page on the run for a browser: each file with its sums, times and pictures, and what failed first'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -s 0 -l null -d 'End the names of --list with NUL, for names that hold line ends'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -l json -d 'Print one JSON object a line, a summary last'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -s q -l quiet -d 'Print only what goes wrong'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -s v -l verbose -d 'Also name the entries of source folders that are passed over, and why'
complete -c trevolt-cli -n '__trevolt_cli_calls rotate' -s h -l help -d 'Print this help and do nothing else'

complete -c trevolt-cli -n '__trevolt_cli_calls compose' -F
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -l layout -r -F -d 'CSV file with a file, its x, its y and its angle a row, in place of FILE@PLACE; the angle may be left out'
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -l from -r -f -a '(__fish_complete_directories)' -d 'Folder of the files that the table names'
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -s s -l size -r -f -d 'Size of the screen in pixels'
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -l allow-overlap -d 'Let files overlap; of several the last one\'s pixels stay'
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -l allow-outside -d 'Let files reach out of the screen; what is outside is cut'
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -l lenient -d 'Also take what could be read of files that are damaged'
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -l overwrite -d 'Replace outputs that exist; without it they are errors'
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -l no-sync -d 'Do not wait until the outputs are on the disk: quicker, but a power cut may cost them'
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -l json -d 'Print one JSON object a line, a summary last'
complete -c trevolt-cli -n '__trevolt_cli_calls compose' -s h -l help -d 'Print this help and do nothing else'

complete -c trevolt-cli -n '__trevolt_cli_calls crop' -F
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -l rect -r -f -d 'Rectangle to cut out, in pixels; right and bottom are exclusive'
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -l turn -r -f -a '90 180 270' -d 'Clockwise turn of what is cut out in degrees, with or without a degree sign; -90 and -180 are 270 and 180'
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -l layout -r -F -d 'CSV file with a file, its x, its y and its angle a row, as compose takes it: every file is cut out and turned back'
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -l from -r -f -a '(__fish_complete_directories)' -d 'Folder of the files that the table names'
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -l cabinet -r -f -d 'Size of every cabinet of the table before its turn'
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -l lenient -d 'Also take what could be read of a source that is damaged'
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -l overwrite -d 'Replace outputs that exist; without it they are errors'
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -l no-sync -d 'Do not wait until the outputs are on the disk: quicker, but a power cut may cost them'
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -l json -d 'Print one JSON object a line, a summary last'
complete -c trevolt-cli -n '__trevolt_cli_calls crop' -s h -l help -d 'Print this help and do nothing else'

complete -c trevolt-cli -n '__trevolt_cli_calls convert' -F
complete -c trevolt-cli -n '__trevolt_cli_calls convert' -l to -r -f -a 'npy 9fcoef 3fcoef 9bcoef 3bcoef 9wcoef 3wcoef 4wcoef 12wcoef cccoef' -d 'What all files become, several of them and folders too'
complete -c trevolt-cli -n '__trevolt_cli_calls convert' -l own -d 'Write .npy files of the values that the sources store, as words or bytes, and not of the map\'s twelve float32'
complete -c trevolt-cli -n '__trevolt_cli_calls convert' -s r -l recursive -d 'Also convert what lies in folders of the source folders; the target gets the same folders'
complete -c trevolt-cli -n '__trevolt_cli_calls convert' -l overwrite -d 'Replace outputs that exist; without it they are errors'
complete -c trevolt-cli -n '__trevolt_cli_calls convert' -l no-sync -d 'Do not wait until the outputs are on the disk: quicker, but a power cut may cost them'
complete -c trevolt-cli -n '__trevolt_cli_calls convert' -l json -d 'Print one JSON object a line, a summary last'
complete -c trevolt-cli -n '__trevolt_cli_calls convert' -s h -l help -d 'Print this help and do nothing else'

complete -c trevolt-cli -n '__trevolt_cli_calls info' -F
complete -c trevolt-cli -n '__trevolt_cli_calls info' -s r -l recursive -d 'Also tell of what lies in folders of the folders'
complete -c trevolt-cli -n '__trevolt_cli_calls info' -l json -d 'Print one JSON object a line, a summary last'
complete -c trevolt-cli -n '__trevolt_cli_calls info' -s h -l help -d 'Print this help and do nothing else'

complete -c trevolt-cli -n '__trevolt_cli_calls diff' -F
complete -c trevolt-cli -n '__trevolt_cli_calls diff' -l tolerance -r -f -d 'How far values may be apart that count as the same'
complete -c trevolt-cli -n '__trevolt_cli_calls diff' -l turned -r -f -a '90 180 270' -d 'Compare B with A after a clockwise turn in degrees, with or without a degree sign; -90 and -180 are 270 and 180; of folders those files that rotate names so'
complete -c trevolt-cli -n '__trevolt_cli_calls diff' -s r -l recursive -d 'Also compare what lies in folders of the folders'
complete -c trevolt-cli -n '__trevolt_cli_calls diff' -l image -r -F -d 'New PNG file for a picture of how far the pixels are apart'
complete -c trevolt-cli -n '__trevolt_cli_calls diff' -l range -r -f -d 'Values at the ends of the scale; those beyond have colours of their own'
complete -c trevolt-cli -n '__trevolt_cli_calls diff' -l overwrite -d 'Replace outputs that exist; without it they are errors'
complete -c trevolt-cli -n '__trevolt_cli_calls diff' -l no-sync -d 'Do not wait until the outputs are on the disk: quicker, but a power cut may cost them'
complete -c trevolt-cli -n '__trevolt_cli_calls diff' -l json -d 'Print one JSON object a line, a summary last'
complete -c trevolt-cli -n '__trevolt_cli_calls diff' -s h -l help -d 'Print this help and do nothing else'

complete -c trevolt-cli -n '__trevolt_cli_calls preview' -F
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -l view -r -f -a 'brightness colour m00 m01 m02 m10 m11 m12 m20 m21 m22 g0 g1 g2' -d 'What is shown: the brightness or the colour that pixels have for white, one coefficient of their matrices by its row and column, or one value of the virtual green, of kinds that hold it'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -l scale -r -f -a 'false-colour grey' -d 'Colours of brightness or coefficient'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -l range -r -f -d 'Values at the ends of the scale; those beyond have colours of their own'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -l turned -r -f -a '90 180 270' -d 'Show a single map before and after a clockwise turn in degrees, with or without a degree sign; -90 and -180 are 270 and 180'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -l grid -r -f -d 'How cabinets stand in the wall; they fill it row by row, Cab_2 before Cab_10'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -l width -r -f -d 'Pixels that the picture may be wide; what it shows is up to five eighths of that high'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -s r -l recursive -d 'Also show what lies in folders of the folders'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -l overwrite -d 'Replace outputs that exist; without it they are errors'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -l no-sync -d 'Do not wait until the outputs are on the disk: quicker, but a power cut may cost them'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -l json -d 'Print one JSON object a line, a summary last'
complete -c trevolt-cli -n '__trevolt_cli_calls preview' -s h -l help -d 'Print this help and do nothing else'

complete -c trevolt-cli -n '__trevolt_cli_calls verify' -F
complete -c trevolt-cli -n '__trevolt_cli_calls verify' -s h -l help -d 'Print this help and do nothing else'

complete -c trevolt-cli -n '__trevolt_cli_calls demo' -f -a '(__fish_complete_directories)'
complete -c trevolt-cli -n '__trevolt_cli_calls demo' -l overwrite -d 'Replace outputs that exist; without it they are errors'
complete -c trevolt-cli -n '__trevolt_cli_calls demo' -l no-sync -d 'Do not wait until the outputs are on the disk: quicker, but a power cut may cost them'
complete -c trevolt-cli -n '__trevolt_cli_calls demo' -s h -l help -d 'Print this help and do nothing else'
