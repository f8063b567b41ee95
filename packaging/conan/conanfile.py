"""Recipe for Conan 2, which builds the source tree it lies in.

    conan create packaging/conan -s compiler.cppstd=20 --build=missing

It has not been run.
"""

import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load

required_conan_version = ">=2.0"


class FisheyeCalibrationRecipe(ConanFile):
    """The dynamic library and, on request, the program."""

    name = "fisheye_calibration"
    license = "Apache-2.0"
    description = "Fisheye cameras over a work bed as measuring instruments"
    topics = ("camera-calibration", "fisheye", "metrology")
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"program": [True, False], "interactive": [True, False], "debug_files": [True, False]}
    default_options = {"program": False, "interactive": True, "debug_files": True}

    @property
    def _tree(self):
        return os.path.join(self.recipe_folder, os.pardir, os.pardir)

    def set_version(self):
        text = load(self, os.path.join(self._tree, "CMakeLists.txt"))
        self.version = re.search(r"^project\([^)]*?\sVERSION\s+([\d.]+)", text, re.MULTILINE).group(
            1
        )

    def export_sources(self):
        for pattern in (
            "CMakeLists.txt",
            "LICENSE",
            "CHANGELOG.md",
            "CONTRIBUTING.md",
            "README.md",
            "cmake/*",
            "docs/*",
            "include/*",
            "program/*",
            "src/*",
        ):
            copy(self, pattern, self._tree, self.export_sources_folder)

    def requirements(self):
        # 4.9 defines the pixels; the library has been tested with 4.6 and 4.10.
        self.requires("opencv/[>=4.6 <5]")
        self.requires("highway/[>=1.0.3 <2]")
        if self.options.program:
            self.requires("cli11/[>=2.1 <3]")
            self.requires("cpp-httplib/[>=0.11 <1]")
            self.requires("nlohmann_json/[>=3.7 <4]")

    def build_requirements(self):
        self.tool_requires("cmake/[>=3.25 <5]")

    def validate(self):
        check_min_cppstd(self, 20)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["FISHEYE_CALIBRATION_BUILD_TESTS"] = False
        toolchain.cache_variables["FISHEYE_CALIBRATION_INSTALL_STATIC"] = False
        toolchain.cache_variables["FISHEYE_CALIBRATION_BUILD_PROGRAM"] = bool(self.options.program)
        toolchain.cache_variables["FISHEYE_CALIBRATION_INTERACTIVE"] = bool(
            self.options.interactive
        )
        toolchain.cache_variables["FISHEYE_CALIBRATION_DEBUG_FILES"] = bool(
            self.options.debug_files
        )
        toolchain.generate()
        dependencies = CMakeDeps(self)
        # The names that Highway's own CMake package has.
        dependencies.set_property("highway", "cmake_file_name", "hwy")
        dependencies.set_property("highway::hwy", "cmake_target_name", "hwy::hwy")
        dependencies.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        # Hosts use the library's own CMake package, with its components.
        self.cpp_info.libs = ["fisheye_calibration"]
        self.cpp_info.builddirs = [os.path.join("lib", "cmake", "fisheye_calibration")]
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.set_property("pkg_config_name", "fisheye_calibration")
