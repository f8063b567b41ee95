"""The document of scripts/make-sbom while it grows, and what it says of installed packages."""

from __future__ import annotations

import datetime
import functools
import hashlib
import json
import os
import platform
import re
import subprocess
import uuid
from dataclasses import dataclass
from pathlib import Path
from typing import Any
from urllib.parse import quote

NAME = "fisheye_calibration"
SUPPLIER = "Organization: fisheye_calibration maintainers"


def purl(place: str, version: str, **qualifiers: str) -> str:
    """Return a package URL, given what stands between its scheme and its version."""
    ending = "&".join(f"{key}={quote(value)}" for key, value in sorted(qualifiers.items()))
    return f"pkg:{place}@{quote(version, safe=':')}" + (f"?{ending}" if ending else "")


def distribution() -> str:
    """Return the name of this machine's Debian release in package URLs."""
    return "debian-" + platform.freedesktop_os_release()["VERSION_ID"]


@dataclass(frozen=True)
class Installed:
    """A Debian package of this machine."""

    name: str
    version: str
    architecture: str
    provides: frozenset[str]

    def purl(self) -> str:
        """Return its package URL."""
        return purl(
            f"deb/debian/{quote(self.name)}",
            self.version,
            arch=self.architecture,
            distro=distribution(),
        )


@functools.cache
def installed_packages() -> list[Installed]:
    """Return the packages of this machine, those of its own architecture first."""

    def output(*command: str) -> str:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout

    fields = "${Package}\t${Version}\t${Architecture}\t${db:Status-Status}\t${Provides}\n"
    own = (output("dpkg", "--print-architecture").strip(), "all")
    packages = []
    for line in output("dpkg-query", "-W", "-f", fields).splitlines():
        name, version, architecture, status, provided = line.split("\t")
        if status == "installed":
            provides = frozenset(part.split()[0] for part in provided.split(",") if part.strip())
            packages.append(Installed(name, version, architecture, provides))
    return sorted(packages, key=lambda package: (package.architecture not in own, package.name))


def alternatives(dependency: str) -> list[str]:
    """Return the names in a dependency in Debian's notation, such as "a (>= 1) | b:any"."""
    return [re.split(r"[\s(:]", part.strip(), maxsplit=1)[0] for part in dependency.split("|")]


def installed(names: list[str]) -> Installed:
    """Return the installed package that has one of the names or, if there is none, provides it."""
    for needed in names:
        for package in installed_packages():
            if package.name == needed:
                return package
        for package in installed_packages():
            if needed in package.provides:
                return package
    needed = " | ".join(names)
    raise SystemExit(f"make-sbom: {needed}, which the bill has to name, is not installed")


class Bill:
    """The document."""

    def __init__(self, version: str) -> None:
        """Start a bill without packages."""
        self.version = version
        self.packages: dict[str, dict[str, Any]] = {}
        self.relationships: dict[tuple[str, str, str], list[str]] = {}
        self.texts: dict[str, str] = {}

    def add(
        self, identity: str, name: str, version: str, licence: str, locator: str, **more: Any
    ) -> str:
        """Add a package with its package URL unless it is there, and return its identity."""
        identity = "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]+", "-", identity)
        reference = {
            "referenceCategory": "PACKAGE-MANAGER",
            "referenceType": "purl",
            "referenceLocator": locator,
        }
        self.packages.setdefault(
            identity,
            {
                "SPDXID": identity,
                "name": name,
                "versionInfo": version,
                "downloadLocation": "NOASSERTION",
                "filesAnalyzed": False,
                "licenseConcluded": licence,
                "licenseDeclared": licence,
                "copyrightText": "NOASSERTION",
                "externalRefs": [reference],
                **more,
            },
        )
        return identity

    def relate(self, one: str, relation: str, other: str, comment: str = "") -> None:
        """Add a relationship, or another comment to it."""
        comments = self.relationships.setdefault((one, relation, other), [])
        if comment:
            comments.append(comment)

    def add_artefact(self, path: Path, version: str, locator: str, purpose: str) -> str:
        """Add a shipped file."""
        checksum = hashlib.sha256(path.read_bytes()).hexdigest()
        artefact = self.add(
            f"Shipped-{path.name}",
            path.name,
            version,
            "Apache-2.0",
            locator,
            packageFileName=path.name,
            supplier=SUPPLIER,
            primaryPackagePurpose=purpose,
            checksums=[{"algorithm": "SHA256", "checksumValue": checksum}],
        )
        self.relate("SPDXRef-DOCUMENT", "DESCRIBES", artefact)
        return artefact

    def add_dependency(self, artefact: str, dependency: str) -> None:
        """Add what a dependency in Debian's notation requires: the first that is installed."""
        found = installed(alternatives(dependency))
        other = self.add(
            f"Debian-{found.name}", found.name, found.version, "NOASSERTION", found.purl()
        )
        self.relate(artefact, "DEPENDS_ON", other, dependency)

    def related(self) -> list[dict[str, str]]:
        """Return the relationships as the document has them."""
        return [
            {
                "spdxElementId": one,
                "relationshipType": relation,
                "relatedSpdxElement": other,
                **({"comment": ", ".join(comments)} if comments else {}),
            }
            for (one, relation, other), comments in sorted(self.relationships.items())
        ]

    def document(self) -> dict[str, Any]:
        """Return the document."""
        epoch = int(os.environ.get("SOURCE_DATE_EPOCH") or datetime.datetime.now().timestamp())
        created = datetime.datetime.fromtimestamp(epoch, datetime.timezone.utc)
        content = json.dumps([list(self.packages.values()), self.related(), self.texts])
        identity = uuid.uuid5(uuid.NAMESPACE_OID, NAME + self.version + content)
        document = {
            "spdxVersion": "SPDX-2.3",
            "dataLicense": "CC0-1.0",
            "SPDXID": "SPDXRef-DOCUMENT",
            "name": f"{NAME}-{self.version}",
            "documentNamespace": f"urn:uuid:{identity}",
            "creationInfo": {
                "created": created.strftime("%Y-%m-%dT%H:%M:%SZ"),
                "creators": [SUPPLIER, f"Tool: {NAME}-make-sbom-{self.version}"],
            },
            "packages": list(self.packages.values()),
            "relationships": self.related(),
        }
        if self.texts:
            document["hasExtractedLicensingInfos"] = [
                {"licenseId": licence, "extractedText": text}
                for licence, text in sorted(self.texts.items())
            ]
        return document
