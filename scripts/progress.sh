# Read by other scripts with `source`.

# progress LOG LABEL: keeps what a long command says in LOG, and shows how far ninja or apt-get has come: a line that
# renews itself on a terminal, a line each tenth of the way elsewhere.
progress() {
    local log=$1 label=$2 line text share tenth=0
    while IFS= read -r line; do
        printf '%s\n' "$line" >>"$log"
        if [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]]; then
            share=$((100 * BASH_REMATCH[1] / BASH_REMATCH[2]))
            text="$label: ${BASH_REMATCH[1]} of ${BASH_REMATCH[2]}"
        elif [[ $line =~ ^(dl|pm)status:[^:]*:([0-9]+) ]]; then
            share=${BASH_REMATCH[2]}
            text="$label: $([ "${BASH_REMATCH[1]}" = dl ] && echo downloading || echo unpacking), $share %"
        else
            continue
        fi
        if [ -t 1 ]; then
            printf '\r\033[K%s' "$text"
        elif [ $((share / 10)) -ne "$tenth" ]; then
            tenth=$((share / 10))
            printf '%s\n' "$text"
        fi
    done
    [ ! -t 1 ] || printf '\r\033[K'
}
