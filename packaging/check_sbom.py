"""Checks an SBOM against the rules of SPDX 2.3: check_sbom.py SBOM.spdx.json PACKAGE.zip

The schema beside this file says what the fields are. Besides: each licence is in SPDX's list or quoted, each element is
there once and in a relationship, and the checksums are those of the package.
"""

import hashlib
import json
import pathlib
import sys
import zipfile

import jsonschema
import license_expression

LICENCES = license_expression.get_spdx_licensing()


def licence_errors(document):
    quoted = {info["licenseId"] for info in document["hasExtractedLicensingInfos"]}
    for element in document["packages"] + document["files"]:
        for field in ("licenseConcluded", "licenseDeclared"):
            expression = element.get(field, "NOASSERTION")
            if expression != "NOASSERTION":
                unknown = set(LICENCES.unknown_license_keys(expression)) - quoted
                if unknown:
                    yield f"{element['SPDXID']}: unknown licences {sorted(unknown)}"


def reference_errors(document):
    names = [element["SPDXID"] for element in document["packages"] + document["files"]]
    if len(set(names)) != len(names):
        yield "an element's name is there twice"
    used = set()
    for relationship in document["relationships"]:
        used |= {relationship["spdxElementId"], relationship["relatedSpdxElement"]}
    for name in used ^ {"SPDXRef-DOCUMENT", *names}:
        yield f"{name} is only named, or in no relationship"


def checksum_errors(document, package):
    described = document["packages"][0]
    if described["checksums"][0]["checksumValue"] != hashlib.sha256(package.read_bytes()).hexdigest():
        yield "it describes another package"
    with zipfile.ZipFile(package) as packed:
        told = {file["fileName"]: {s["algorithm"]: s["checksumValue"] for s in file["checksums"]} for file in document["files"]}
        real = {
            "./" + name: {kind.upper(): hashlib.new(kind, packed.read(name)).hexdigest() for kind in ("sha1", "sha256")}
            for name in packed.namelist()
        }
    if told != real:
        yield "its files aren't those of the package"
    code = hashlib.sha1("".join(sorted(sums["SHA1"] for sums in real.values())).encode()).hexdigest()
    if described["packageVerificationCode"]["packageVerificationCodeValue"] != code:
        yield "the verification code is another"


def errors(document, package):
    schema = json.loads(pathlib.Path(__file__).with_name("spdx-2.3.schema.json").read_text())
    validator = jsonschema.Draft7Validator(schema, format_checker=jsonschema.FormatChecker())
    found = [f"{error.json_path}: {error.message}" for error in validator.iter_errors(document)]
    # What doesn't have the form can't be looked at any further.
    return found or [*licence_errors(document), *reference_errors(document), *checksum_errors(document, package)]


if __name__ == "__main__":
    DOCUMENT = json.loads(pathlib.Path(sys.argv[1]).read_text())
    FOUND = errors(DOCUMENT, pathlib.Path(sys.argv[2]))
    for FOUND_ERROR in FOUND:
        print(f"{sys.argv[1]}: {FOUND_ERROR}")
    if FOUND:
        sys.exit(1)
    print(f"SPDX 2.3: {len(DOCUMENT['packages'])} packages, {len(DOCUMENT['files'])} files, "
          f"{len(DOCUMENT['relationships'])} relationships, no error")
