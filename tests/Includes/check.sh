#!/usr/bin/env bash
# Checks that rooms include what their link lines name: check.sh ROOMS SOURCES. ROOMS has a line for each room: its name,
# folder and sources, LINKS and the rooms behind it, PRIVATE and those that are not passed on.
set -euo pipefail
cd "$2"

grep -rn --include='*.h' --include='*.cpp' '^#include "' . | awk -v rooms="$1" '
    # Rooms that `room` may include from, itself included. What a room links privately is its own alone.
    function reach(room, from,    parts, count, i) {
        if ((room, from) in reached)
            return
        reached[room, from] = 1
        count = split(links[from] (room == from ? private[from] : ""), parts, " ")
        for (i = 1; i <= count; ++i)
            reach(room, parts[i])
    }
    # Rooms that a file may belong to: its source names one; a header without a source belongs to its folder.
    function owners(file,    folder) {
        sub(/\.(h|cpp)$/, "", file)
        folder = file
        sub(/\/[^\/]*$/, "", folder)
        return file in owner ? owner[file] : inFolder[folder]
    }
    BEGIN {
        while ((getline line < rooms) > 0) {
            count = split(line, words, " ")
            inFolder[words[2]] = inFolder[words[2]] " " words[1]
            part = "SOURCES"
            for (i = 3; i <= count; ++i) {
                word = words[i]
                if (word == "LINKS" || word == "PRIVATE")
                    part = word
                else if (part == "SOURCES" && sub(/\.cpp$/, "", word))
                    owner[words[2] "/" word] = words[1]
                else if (sub(/^Ferrow::/, "", word) && part == "LINKS")
                    links[words[1]] = links[words[1]] " " word
                else if (part == "PRIVATE")
                    private[words[1]] = private[words[1]] " " word
            }
        }
        for (file in owner)
            reach(owner[file], owner[file])
    }
    {
        split($0, place, ":")
        file = substr(place[1], 3)
        if (file ~ /\/Main\.cpp$/) # A program, not a room.
            next
        included = $0
        gsub(/^[^"]*"|".*$/, "", included)
        fine = 0
        fromCount = split(owners(file), from, " ")
        toCount = split(owners(included), to, " ")
        for (i = 1; i <= fromCount; ++i)
            for (j = 1; j <= toCount; ++j)
                fine = fine || (from[i], to[j]) in reached
        ++checked
        if (!fine) {
            print file " includes " included ", of a room that its own does not link"
            failed = 1
        }
    }
    END {
        print checked " includes checked"
        exit failed || checked < 100
    }'
