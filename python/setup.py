"""A wheel with the library in it: for one sort of machine, but for every Python."""

from setuptools import Distribution, setup
from wheel.bdist_wheel import bdist_wheel


class BinaryDistribution(Distribution):
    """What is installed where packages with machine code go."""

    def has_ext_modules(self) -> bool:
        return True


class PlatformWheel(bdist_wheel):
    """A wheel without modules that are compiled for one Python."""

    def get_tag(self) -> "tuple[str, str, str]":
        return "py3", "none", self.plat_name


setup(distclass=BinaryDistribution, cmdclass={"bdist_wheel": PlatformWheel})
