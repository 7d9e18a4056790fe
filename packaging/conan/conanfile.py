"""conan create packaging/conan: the library, from the tree that this file lies in."""

import os
import re

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load

required_conan_version = ">=2.0"


class KestrelConan(ConanFile):
    name = "kestrel"
    description = "Qt widgets for OPC UA client applications"
    license = "Apache-2.0"
    topics = ("opc-ua", "qt", "widgets")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False]}
    default_options = {"shared": True, "qt/*:shared": True, "qt/*:qtsvg": True, "qt/*:qttools": True}

    @property
    def _tree(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        text = load(self, os.path.join(self._tree, "CMakeLists.txt"))
        self.version = re.search(r"project\(Kestrel VERSION ([0-9.]+)", text).group(1)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "docs/*", "src/*", "translations/*"):
            copy(self, pattern, self._tree, self.export_sources_folder)

    def requirements(self):
        self.requires("qt/[>=6.4 <7]", transitive_headers=True)
        self.requires("openssl/[>=3 <4]")

    def build_requirements(self):
        self.tool_requires("cmake/[>=3.25]")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["BUILD_TESTING"] = False
        for part in ("DESIGNER", "DOCS", "HARRIER"):
            toolchain.cache_variables[f"KESTREL_BUILD_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))
        CMake(self).install()

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "Kestrel")
        self.cpp_info.set_property("cmake_target_name", "Kestrel::Kestrel")
        self.cpp_info.set_property("pkg_config_name", "kestrel")
        self.cpp_info.libs = ["Kestrel"]
        self.cpp_info.requires = ["qt::qtWidgets", "qt::qtNetwork", "qt::qtDBus", "qt::qtSvg",
                                  "openssl::crypto"]
        if not self.options.shared:
            self.cpp_info.defines = ["KESTREL_STATIC"]
