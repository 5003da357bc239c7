#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The bill of materials of a release, held to what SPDX 2.3 requires and to the files that it speaks of."""
import hashlib
import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

SOURCE, BUILD = (pathlib.Path(os.environ[name]) for name in ("VYNLIB_SOURCE", "VYNLIB_BUILD"))
IDENTIFIER = r"SPDXRef-[A-Za-z0-9.-]+"
# The mandatory fields of each kind of element, with what they must look like.
DOCUMENT = {
    "spdxVersion": r"SPDX-2\.3",
    "dataLicense": r"CC0-1\.0",
    "SPDXID": "SPDXRef-DOCUMENT",
    "name": r".+",
    "documentNamespace": r"https?://[^#]+",
}
CREATION = {"created": r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", "creators": r"(Person|Organization|Tool): .+"}
PACKAGE = {"SPDXID": IDENTIFIER, "name": r".+", "versionInfo": r".+", "downloadLocation": r"NOASSERTION|NONE|https?://.+",
           "supplier": r"(Person|Organization): .+", "filesAnalyzed": r"True|False"}
FILE = {"SPDXID": IDENTIFIER, "fileName": r"\./[^/].*", "copyrightText": r".+", "licenseConcluded": r".+"}
RELATION = {"spdxElementId": IDENTIFIER, "relatedSpdxElement": IDENTIFIER,
            "relationshipType": r"DESCRIBES|CONTAINS|DYNAMIC_LINK|BUILD_DEPENDENCY_OF"}
A_DAY_OF_2024 = "1709210096"


def bill(installed):
    environment = os.environ | {"SOURCE_DATE_EPOCH": A_DAY_OF_2024}
    return subprocess.run([SOURCE / "scripts/sbom", BUILD, installed], check=True, capture_output=True, text=True,
                          env=environment).stdout


class Sbom(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="vyn-sbom-")
        cls.addClassCleanup(folder.cleanup)
        cls.installed = pathlib.Path(folder.name, "usr")
        for component in ("runtime", "sim", "tools"):
            subprocess.run(["cmake", "--install", str(BUILD), "--prefix", str(cls.installed), "--component", component],
                           check=True, capture_output=True)
        cls.text = bill(cls.installed)
        cls.document = json.loads(cls.text)

    def expect_fields(self, element, fields):
        for name, form in fields.items():
            self.assertIn(name, element)
            values = element[name] if isinstance(element[name], list) else [element[name]]
            self.assertTrue(values)
            for value in values:
                self.assertRegex(str(value), f"^({form})$")

    def packages(self, relation):
        """Names of the packages on the other side of this kind of relation."""
        ends = {end for one in self.document["relationships"] if one["relationshipType"] == relation
                for end in (one["spdxElementId"], one["relatedSpdxElement"])}
        return {package["name"] for package in self.document["packages"] if package["SPDXID"] in ends} - {"vynlib"}

    def test_mandatory_fields(self):
        self.expect_fields(self.document, DOCUMENT)
        self.expect_fields(self.document["creationInfo"], CREATION)
        for kind, fields in (("packages", PACKAGE), ("files", FILE), ("relationships", RELATION)):
            self.assertTrue(self.document[kind])
            for element in self.document[kind]:
                self.expect_fields(element, fields)

    def test_identifiers_are_unique_and_relations_end_at_elements(self):
        identifiers = ["SPDXRef-DOCUMENT"]
        identifiers += [element["SPDXID"] for kind in ("packages", "files") for element in self.document[kind]]
        self.assertEqual(len(identifiers), len(set(identifiers)))
        for relation in self.document["relationships"]:
            self.assertLessEqual({relation["spdxElementId"], relation["relatedSpdxElement"]}, set(identifiers))

    def test_the_document_describes_the_project(self):
        project = self.document["packages"][0]
        self.assertEqual(("vynlib", "Organization: VynLib developers"), (project["name"], project["supplier"]))
        self.assertIn({"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES",
                       "relatedSpdxElement": project["SPDXID"]}, self.document["relationships"])

    def test_every_file_with_its_sums(self):
        files = {file["fileName"][2:]: {sum["algorithm"]: sum["checksumValue"] for sum in file["checksums"]}
                 for file in self.document["files"]}
        there = {path.relative_to(self.installed).as_posix(): path for path in self.installed.rglob("*")
                 if path.is_file() and not path.is_symlink()}
        self.assertEqual(set(there), set(files))
        self.assertIn("bin/vynctl", files)
        for name, path in there.items():
            contents = path.read_bytes()
            self.assertEqual({"SHA1": hashlib.sha1(contents).hexdigest(), "SHA256": hashlib.sha256(contents).hexdigest()},
                             files[name], name)

    def test_the_verification_code_is_the_sum_of_the_sorted_sums(self):
        sums = subprocess.run("find . -type f -exec sha1sum {} + | cut -c1-40 | sort | tr -d '\\n' | sha1sum", shell=True,
                              cwd=self.installed, check=True, capture_output=True, text=True, env={"LC_ALL": "C"}).stdout
        self.assertEqual(sums.split()[0],
                         self.document["packages"][0]["packageVerificationCode"]["packageVerificationCodeValue"])

    def test_what_is_linked_and_what_is_compiled_in(self):
        self.assertLessEqual({"libsafec3", "libstdc++6", "libc6"}, self.packages("DYNAMIC_LINK"))
        self.assertLessEqual({"libsafec-dev", "libcli11-dev", "nlohmann-json3-dev", "libtomlplusplus-dev"},
                             self.packages("BUILD_DEPENDENCY_OF"))
        for name in self.packages("DYNAMIC_LINK") | self.packages("BUILD_DEPENDENCY_OF"):
            self.assertNotRegex(name, "test|mock|benchmark")

    def test_scanners_know_the_packages(self):
        safec = next(package for package in self.document["packages"] if package["name"] == "libsafec3")
        number = subprocess.run(["dpkg-query", "--show", "--showformat=${Version}", "libsafec3"], check=True,
                                capture_output=True, text=True).stdout
        self.assertEqual(number, safec["versionInfo"])
        self.assertEqual([f"pkg:deb/debian/libsafec3@{number}?arch=amd64"],
                         [reference["referenceLocator"] for reference in safec["externalRefs"]])

    def test_the_same_files_give_the_same_bytes(self):
        self.assertEqual("2024-02-29T12:34:56Z", self.document["creationInfo"]["created"])
        self.assertEqual(self.text, bill(self.installed))
        self.assertIsNone(re.search(re.escape(str(self.installed)), self.text))


if __name__ == "__main__":
    unittest.main()
