# SPDX-License-Identifier: MIT
"""Puts the libraries, which CMake builds, into the wheel; pyproject.toml has all the rest.

The environment: TAVRIX_BUILD, a folder for what is built (build/python unless given); CMAKE_ARGS, more options.
"""

import os
import pathlib
import shlex
import shutil
import subprocess
import sys

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

try:
    from wheel.bdist_wheel import bdist_wheel
except ImportError:
    sys.path.append("/usr/lib/python3/dist-packages")  # Debian's python3-wheel, which any Python 3 can use
    from wheel.bdist_wheel import bdist_wheel

SOURCE = pathlib.Path(__file__).resolve().parent
BUILD = pathlib.Path(os.environ.get("TAVRIX_BUILD", SOURCE / "build/python")).resolve()
TARGETS = {"tavrix": "libtavrix.so.1", "tavrix_automatic": "libtavrixauto.so.1",
           "tavrix_python_rows": "libtavrixrows.so"}


class BuildWithLibraries(build_py):
    def run(self):
        super().run()
        generator = ["-G", "Ninja"] if shutil.which("ninja") and "CMAKE_GENERATOR" not in os.environ else []
        subprocess.run(["cmake", "-S", SOURCE, "-B", BUILD, *generator, "-DCMAKE_BUILD_TYPE=Release",
                        "-DTAVRIX_HOST=OFF", "-DTAVRIX_TESTS=OFF", "-DCMAKE_BUILD_WITH_INSTALL_RPATH=ON",
                        "-DCMAKE_INSTALL_RPATH=$ORIGIN", *shlex.split(os.environ.get("CMAKE_ARGS", ""))], check=True)
        subprocess.run(["cmake", "--build", BUILD, "--parallel", str(os.cpu_count() or 1), "--target", *TARGETS],
                       check=True)
        for name in TARGETS.values():
            shutil.copy(BUILD / "src" / name, pathlib.Path(self.build_lib, "tavrix", name))  # not the link, the file


class PlatformWheel(bdist_wheel):
    """For every Python 3, but one kind of machine."""

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


class PlatformDistribution(Distribution):
    def has_ext_modules(self):
        return True


BUILD.mkdir(parents=True, exist_ok=True)
setup(distclass=PlatformDistribution,
      cmdclass={"build_py": BuildWithLibraries, "bdist_wheel": PlatformWheel},
      options={"build": {"build_base": str(BUILD)}, "egg_info": {"egg_base": str(BUILD)}})
