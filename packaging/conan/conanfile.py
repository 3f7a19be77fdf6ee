"""kelp0lang for Conan 2, of the sources in the tree that this recipe stands in:
conan create packaging/conan"""
import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load


class Kelp0lang(ConanFile):
    name = "kelp0lang"
    license = "MIT"
    description = "Foundation library of surveying and geomatics desktop programs"
    settings = "os", "compiler", "build_type", "arch"
    options = {"shared": [True, False]}
    default_options = {"shared": True, "boost/*:header_only": True}
    package_type = "library"

    def set_version(self):
        text = load(self, os.path.join(self.recipe_folder, "..", "..", "CMakeLists.txt"))
        self.version = re.search(r"project\(kelp0lang VERSION ([0-9.]+)", text).group(1)

    def export_sources(self):
        root = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "LICENSE", "CHANGELOG.md", "cmake/*", "common/*", "views/*",
                        "packaging/windows.txt"):
            copy(self, pattern, root, self.export_sources_folder)

    def validate(self):
        check_min_cppstd(self, 20)

    def requirements(self):
        # The header of boost::shared_ptr stands in two interfaces.
        self.requires("boost/[>=1.74 <2]", transitive_headers=True)
        self.requires("expat/[>=2.5 <3]")
        # Only its headers; on Linux those of CUPS and of XCB's RandR come from the system.
        if self.settings.os != "Windows":
            self.requires("libcurl/[>=7.88 <9]")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        for name in ("PROGRAMS", "TESTS"):
            toolchain.cache_variables["KELP_BUILD_" + name] = False
        toolchain.cache_variables["KELP_DEBIAN_SOURCES"] = False
        toolchain.cache_variables["KELP_WARNINGS_ARE_ERRORS"] = False
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        # The package's own CMake file knows more than Conan could tell.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = [os.path.join("lib", "cmake", "kelp0lang")]
