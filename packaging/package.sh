#!/usr/bin/env bash
# Packs what has been built for other people's projects. Beside the zip come the list of its components (SPDX) and a file
# of checksums. The same commit gives the same bytes, whenever and wherever it is built and packed.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

stage=$XO_ROOT/package/$package
components=$XO_ROOT/$package.spdx.json
epoch=$(package_time)

# name|Debian package|licence|part, without the comment
foreign() { grep -v '^#' packaging/components.txt; }

lay_out() {
    rm -rf "$XO_ROOT/package"
    cmake --install "$XO_OUT" --prefix "$stage" >/dev/null
    cp -r "$XO_ROOT/docs/html" "$stage/docs/"
    local name origin
    while IFS='|' read -r name origin _; do
        install -D -m 644 "/usr/share/doc/$origin/copyright" "$stage/share/licenses/$name.txt"
    done < <(foreign)
}

# The parts that are files of the package have a checksum.
checksum() {
    [[ ! -f $stage/$1 ]] || printf '\n      "checksums": [{"algorithm": "SHA256", "checksumValue": "%s"}],' \
        "$(sha256sum <"$stage/$1" | cut -d' ' -f1)"
}

# name, version, licence, part, origin
component() {
    cat <<END
    {
      "SPDXID": "SPDXRef-${1//+/p}",
      "name": "$1",
      "versionInfo": "$2",
      "downloadLocation": "NOASSERTION",
      "filesAnalyzed": false,
      "licenseConcluded": "$3",
      "licenseDeclared": "$3",
      "copyrightText": "NOASSERTION",$(checksum "$4")
      "comment": "$4${5:+; from the Debian package $5}"
    }
END
}

list_components() {
    local name origin licence part relations=
    cat <<END
{
  "spdxVersion": "SPDX-2.3",
  "dataLicense": "CC0-1.0",
  "SPDXID": "SPDXRef-DOCUMENT",
  "name": "$package",
  "documentNamespace": "urn:sha256:$(sha256sum <"$stage/bin/xoSystem.dll" | cut -d' ' -f1)",
  "creationInfo": {"created": "$(date -u -d "@$epoch" +%FT%TZ)", "creators": ["Tool: xoSystem-package"]},
  "packages": [
$(component xoSystem "$version" NOASSERTION bin/xoSystem.dll)
END
    while IFS='|' read -r name origin licence part; do
        echo ","
        component "$name" "$(dpkg-query -W -f '${Version}' "$origin")" "$licence" "$part" "$origin"
        relations+=$',\n    {"spdxElementId": "SPDXRef-xoSystem", "relationshipType": "DEPENDS_ON"'
        relations+=", \"relatedSpdxElement\": \"SPDXRef-${name//+/p}\"}"
    done < <(foreign)
    cat <<END
  ],
  "relationships": [
    {"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES", "relatedSpdxElement": "SPDXRef-xoSystem"}$relations
  ]
}
END
}

# Sorted names, one time, fixed rights, no extra fields.
pack() {
    find "$XO_ROOT/package" -exec touch -h -d "@$epoch" {} +
    find "$stage" -type d -exec chmod 755 {} + -o -type f ! -name '*.dll' -exec chmod 644 {} +
    rm -f "$archive"
    (cd "$XO_ROOT/package" && find "$package" -type f | sort | TZ=UTC zip -X -q -9 "$archive" -@)
}

lay_out
list_components >"$components"
cmake -P packaging/checkJson.cmake "$components"
cp "$components" "$stage/share/components.spdx.json"
pack
(cd "$XO_ROOT" && sha256sum "${archive##*/}" "${components##*/}" | tee "$archive.sha256")
