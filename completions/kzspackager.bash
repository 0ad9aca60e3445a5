# bash completion for kzspackager

_kzspackager() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    # "=" is a word of its own when the value follows it directly.
    [ "$previous" = "=" ] && previous=${COMP_WORDS[COMP_CWORD - 2]}
    [ "$current" = "=" ] && current="" && previous=${COMP_WORDS[COMP_CWORD - 1]}
    local switches="--help --version --config-dump --sample-dump --external-bootstrap
        --inspect-fragments --inspect-bootstrap --inspect-index --dump-drm-metadata --edit-list
        --update-drm-info"
    local values="--input-file --output-path --manifest-file --output-manifest-file --bitrate
        --license-server-url --transport-cert --license-server-cert --packager-credential
        --credential-pwd --policy-file --common-key --content-id --encrypt-audio --encrypt-data
        --encrypt-video --ms-unencrypted --video-encrypt-level --fragment-duration
        --duration-precision --frame-rate --frames-per-keyframe-interval
        --keyframe-intervals-per-fragment --frame-precision --allowed-drift --segment-duration
        --conf-file"
    case $previous in
        --input-file | --manifest-file | --transport-cert | --license-server-cert | \
            --packager-credential | --policy-file | --common-key | --conf-file)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return ;;
        --output-path)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            return ;;
        --encrypt-audio | --encrypt-data | --encrypt-video)
            mapfile -t COMPREPLY < <(compgen -W "true false" -- "$current")
            return ;;
        --video-encrypt-level)
            mapfile -t COMPREPLY < <(compgen -W "0 1 2" -- "$current")
            return ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$switches" -- "$current")
    local value
    for value in $(compgen -W "$values" -- "$current"); do COMPREPLY+=("$value="); done
    [ ${#COMPREPLY[@]} -ne 1 ] || [ "${COMPREPLY[0]%=}" = "${COMPREPLY[0]}" ] || compopt -o nospace
}
complete -F _kzspackager kzspackager
