"""Writes the list of what is linked into the programs of a package, as SPDX 2.3 in JSON.

sbom.py PACKAGE.zip VERSION BIN_FOLDER SOURCE_DATE

BIN_FOLDER holds the programs' PDBs, which name every object file and header that went in: what isn't known here ends the
run, so that a new library gets its licence and its notice. Versions are those of the Debian packages. SOURCE_DATE is in
seconds since 1970. The same inputs give the same text.
"""

import datetime
import hashlib
import json
import pathlib
import re
import subprocess
import sys
import urllib.parse
import uuid
import zipfile

NOTICES = "NOTICES.txt"
OWN = re.compile(r"(src|tools|support|bin|build|clients|version)/|internal |$")
HEADERS = re.compile(r"build/windows/tools/\w+/")
# What a path looks like, what it belongs to, its licence. The first that fits counts.
PARTS = [
    (r"/usr/lib/gcc/.*/libgcc", "libgcc", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    (r"/usr/lib/gcc/", "libstdc++", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    (r"/usr/x86_64-w64-mingw32/lib/lib(win)?pthread", "winpthreads", "MIT AND BSD-3-Clause"),
    (r"/usr/x86_64-w64-mingw32/", "mingw-w64", "ZPL-2.1 AND LicenseRef-gdtoa"),
    (r"/usr/include/CLI/", "CLI11", "BSD-3-Clause"),
    (r"/usr/include/nlohmann/", "nlohmann-json", "MIT"),
]


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def linked_files(pdb):
    """Where each object file and each header of a program comes from."""
    modules = re.findall(r"Obj: `(.*?)`", run("llvm-pdbutil-14", "dump", "--modules", pdb))
    sources = re.findall(r"- \((?:MD5: \w+|no checksum)\) (.*)", run("llvm-pdbutil-14", "dump", "--files", pdb))
    for name in modules + sources:
        name = HEADERS.sub("/usr/include/", name.strip().replace("\\", "/"))
        # The compiler's own prefix is cut off the paths of headers.
        yield "/usr/" + name if re.match(r"(lib|x86_64-w64-mingw32)/", name) else name


def linked_parts(pdb):
    parts = {}
    for path in linked_files(pdb):
        if OWN.match(path):
            continue
        part = next((part for part in PARTS if re.match(part[0], path)), None)
        if not part:
            sys.exit(f"sbom: {pdb} holds {path}, whose licence isn't known here")
        parts.setdefault(part, path)
    return parts


def identifier(kind, name):
    return f"SPDXRef-{kind}-" + re.sub(r"[^A-Za-z0-9.-]", "-", name.replace("+", "p"))


def linked_package(part, path):
    package = run("dpkg", "-S", path).split(":")[0]
    version = run("dpkg-query", "-W", "-f", "${Version}", package)
    locator = f"pkg:deb/debian/{urllib.parse.quote(package)}@{urllib.parse.quote(version)}?distro=debian-12"
    return {
        "SPDXID": identifier("Part", part[1]),
        "name": part[1],
        "versionInfo": version,
        "supplier": "Organization: Debian",
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": part[2],
        "licenseDeclared": part[2],
        "copyrightText": "NOASSERTION",
        "comment": f"From Debian's package {package}",
        "externalRefs": [
            {"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl", "referenceLocator": locator}
        ],
    }


def packed_file(name, data):
    return {
        "SPDXID": identifier("File", name),
        "fileName": "./" + name,
        "fileTypes": ["BINARY"] if name.endswith(".exe") else ["DOCUMENTATION"],
        "checksums": [
            {"algorithm": kind.upper(), "checksumValue": hashlib.new(kind, data).hexdigest()}
            for kind in ("sha1", "sha256")
        ],
        "licenseConcluded": "NOASSERTION",
        "copyrightText": "NOASSERTION",
    }


def notice_of_gdtoa(notices):
    """A licence that SPDX has no name for is quoted."""
    return re.search(r"formatted output, conversion of numbers\n=+\n\n(.*?)\n\n=", notices, re.DOTALL)[1]


def document(archive, version, bin_folder, date):
    with zipfile.ZipFile(archive) as packed:
        content = {info.filename: packed.read(info) for info in packed.infolist()}
    files = [packed_file(name, content[name]) for name in sorted(content)]
    packages = {}
    relationships = [("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-Package")]
    for file in files:
        relationships.append(("SPDXRef-Package", "CONTAINS", file["SPDXID"]))
        if file["fileTypes"] == ["BINARY"]:
            pdb = pathlib.Path(bin_folder, file["fileName"]).with_suffix(".pdb")
            for part, path in sorted(linked_parts(pdb).items()):
                packages[part[1]] = linked_package(part, path)
                relationships.append((file["SPDXID"], "STATIC_LINK", packages[part[1]]["SPDXID"]))
    codes = sorted(file["checksums"][0]["checksumValue"] for file in files)
    digest = hashlib.sha256(archive.read_bytes()).hexdigest()
    package = {
        "SPDXID": "SPDXRef-Package",
        "name": "tollmere-steam-helper",
        "versionInfo": version,
        "supplier": "Organization: Tollmere Games",
        "packageFileName": archive.name,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": True,
        "packageVerificationCode": {
            "packageVerificationCodeValue": hashlib.sha1("".join(codes).encode()).hexdigest()
        },
        "checksums": [{"algorithm": "SHA256", "checksumValue": digest}],
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "NOASSERTION",
        "copyrightText": "NOASSERTION",
    }
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"tollmere-steam-helper-{version}",
        "documentNamespace": uuid.uuid5(uuid.NAMESPACE_OID, digest).urn,
        "creationInfo": {
            "created": datetime.datetime.fromtimestamp(date, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ"),
            "creators": ["Organization: Tollmere Games", "Tool: packaging/sbom.py"],
        },
        "packages": [package] + [packages[name] for name in sorted(packages)],
        "files": files,
        "hasExtractedLicensingInfos": [
            {
                "licenseId": "LicenseRef-gdtoa",
                "name": "gdtoa, as in mingw-w64",
                "extractedText": notice_of_gdtoa(content[NOTICES].decode()),
            }
        ],
        "relationships": [
            {"spdxElementId": element, "relationshipType": kind, "relatedSpdxElement": related}
            for element, kind, related in relationships
        ],
    }


if __name__ == "__main__":
    ARCHIVE, VERSION, BIN_FOLDER, DATE = sys.argv[1:]
    print(json.dumps(document(pathlib.Path(ARCHIVE), VERSION, BIN_FOLDER, int(DATE)), indent=2))
