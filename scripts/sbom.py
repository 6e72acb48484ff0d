"""Writes what a set of packages contains and depends on, as one SPDX 2.3 document in JSON.

    sbom.py PACKAGE.deb|PACKAGE.rpm ... >packages.spdx.json

Every package stands with its checksum, every file in it with its own, and every package it depends
on by name and version; so does every Debian package of which its programs carry code in them. The
same packages make the same document: its time is SOURCE_DATE_EPOCH.
"""
import datetime
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

LICENCE = "LicenseRef-Proprietary"
# How cmake/PackageFiles.cmake names what is in the programs, in a package's copyright statement.
EMBEDDED = re.compile(r"^The programs contain (\S+) (\S+), with", re.MULTILINE)


def output(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, **options).stdout


class Package:
    """A built package: its name, version, dependencies, and how its files are got out."""
    def __init__(self, path):
        self.path = pathlib.Path(path)
        self.system = self.path.suffix[1:]
        if self.system == "deb":
            self._read_deb()
        elif self.system == "rpm":
            self._read_rpm()
        else:
            sys.exit(f"sbom.py: {path} is neither a .deb nor an .rpm")

    def _read_deb(self):
        def field(name):
            return output("dpkg-deb", "--field", self.path, name).decode().strip()
        self.name, self.version = field("Package"), field("Version")
        self.architecture = field("Architecture")
        self.dependencies = [parse_deb_dependency(text.strip())
                             for text in field("Depends").split(",") if text.strip()]

    def _read_rpm(self):
        def query(form):
            return output("rpm", "-qp", "--nosignature", "--qf", form, self.path).decode()
        self.name, self.architecture = query("%{NAME}"), query("%{ARCH}")
        self.version = query("%{VERSION}-%{RELEASE}")
        lines = query(r"[%{REQUIRENAME}\t%{REQUIREFLAGS:depflags}\t%{REQUIREVERSION}\n]").splitlines()
        found = [line.split("\t") for line in lines]
        # What only the package manager itself has to know is no part of a running system.
        self.dependencies = sorted({(name, " ".join(f"{sign} {version}".split()))
                                    for name, sign, version in found
                                    if not name.startswith(("rpmlib(", "rtld("))})

    @property
    def identity(self):
        return spdx_id("Package", self.system, self.name)

    @property
    def locator(self):
        return f"pkg:{self.system}/kova-iot/{self.name}@{self.version}?arch={self.architecture}"

    def files(self):
        """The contents of each file of the package, by its path from the root."""
        with tempfile.TemporaryDirectory() as folder:
            if self.system == "deb":
                output("dpkg-deb", "--extract", self.path, folder)
            else:
                archive = output("rpm2cpio", self.path)
                output("cpio", "--extract", "--make-directories", "--quiet", cwd=folder, input=archive)
            root = pathlib.Path(folder)
            return {"./" + file.relative_to(root).as_posix(): file.read_bytes()
                    for file in sorted(root.rglob("*")) if file.is_file() and not file.is_symlink()}


def parse_deb_dependency(text):
    match = re.fullmatch(r"(\S+?)(?::\w+)?(?:\s+\((.*)\))?(?:\s*\|.*)?", text)
    return match[1], match[2] or ""


def spdx_id(*parts):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", "-".join(parts))


def checksums(content, *algorithms):
    return [{"algorithm": name, "checksumValue": hashlib.new(name.lower(), content).hexdigest()}
            for name in algorithms]


def package_url(locator):
    return [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
             "referenceLocator": locator}]


def described(package, files):
    # SPDX's code over all files: the SHA-1 of their sorted SHA-1s.
    sums = "".join(sorted(hashlib.sha1(content).hexdigest() for content in files.values()))
    return {
        "SPDXID": package.identity, "name": package.name, "versionInfo": package.version,
        "packageFileName": package.path.name, "downloadLocation": "NOASSERTION",
        "filesAnalyzed": True,
        "packageVerificationCode":
            {"packageVerificationCodeValue": hashlib.sha1(sums.encode()).hexdigest()},
        "checksums": checksums(package.path.read_bytes(), "SHA256"),
        "licenseConcluded": LICENCE, "licenseDeclared": LICENCE,
        "licenseInfoFromFiles": ["NOASSERTION"], "copyrightText": "NOASSERTION",
        "externalRefs": package_url(package.locator)}


def foreign(identity, name, versions):
    return {"SPDXID": identity, "name": name, "versionInfo": ", ".join(sorted(versions)) or "any",
            "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
            "licenseConcluded": "NOASSERTION", "licenseDeclared": "NOASSERTION",
            "copyrightText": "NOASSERTION"}


def embedded(contents):
    """Name and version of the Debian packages whose code a package's programs carry."""
    return [found for path, content in contents.items() if path.endswith("/copyright")
            for found in EMBEDDED.findall(content.decode())]


def document(packages):
    epoch = int(os.environ.get("SOURCE_DATE_EPOCH", "0"))
    created = datetime.datetime.fromtimestamp(epoch, datetime.timezone.utc)
    digest = hashlib.sha256(b"".join(package.path.read_bytes() for package in packages)).hexdigest()
    entries, files, relations, others, inside = [], [], [], {}, {}
    for package in packages:
        contents = package.files()
        entries.append(described(package, contents))
        relations.append(("SPDXRef-DOCUMENT", "DESCRIBES", package.identity))
        for path, content in contents.items():
            identity = spdx_id("File", package.system, package.name, path[2:])
            files.append({"SPDXID": identity, "fileName": path,
                          "checksums": checksums(content, "SHA1", "SHA256"),
                          "licenseConcluded": LICENCE, "licenseInfoInFiles": ["NOASSERTION"],
                          "copyrightText": "NOASSERTION"})
            relations.append((package.identity, "CONTAINS", identity))
        for name, version in embedded(contents):
            identity = spdx_id("Embedded", name)
            inside[identity] = foreign(identity, name, {version}) | {
                "externalRefs": package_url(f"pkg:deb/debian/{name}@{version}")}
            relations.append((package.identity, "CONTAINS", identity))
        own = {(other.system, other.name): other.identity for other in packages}
        for name, version in package.dependencies:
            identity = own.get((package.system, name))
            if identity is None:
                identity = spdx_id("Dependency", package.system, name)
                others.setdefault(identity, (name, set()))[1].add(version)
                others[identity][1].discard("")
            relations.append((package.identity, "DEPENDS_ON", identity))
    entries += [inside[identity] for identity in sorted(inside)]
    entries += [foreign(identity, *others[identity]) for identity in sorted(others)]
    relations = list(dict.fromkeys(relations))
    return {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"kova-iot-{packages[0].version}",
        "documentNamespace": f"https://kova-iot.invalid/spdx/{digest}",
        "creationInfo": {"created": created.strftime("%Y-%m-%dT%H:%M:%SZ"),
                         "creators": ["Organization: KOVA IoT module maintainers"]},
        "hasExtractedLicensingInfos": [{"licenseId": LICENCE, "name": "All rights reserved",
                                        "extractedText": "All rights reserved."}],
        "packages": entries, "files": files,
        "relationships": [{"spdxElementId": one, "relationshipType": kind,
                           "relatedSpdxElement": other} for one, kind, other in relations]}


def main():
    if len(sys.argv) < 2:
        sys.exit("usage: sbom.py PACKAGE...")
    packages = sorted((Package(path) for path in sys.argv[1:]),
                      key=lambda package: (package.system, package.name))
    json.dump(document(packages), sys.stdout, indent=1)
    print()


if __name__ == "__main__":
    main()
