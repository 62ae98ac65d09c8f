# Runs once: lets `import kova` find the package, whose sources the program carries (SOURCES).
import sys
from importlib.machinery import ModuleSpec


class _Finder:
    @staticmethod
    def find_spec(name, path=None, target=None):
        if name not in SOURCES:
            return None
        return ModuleSpec(name, _Finder, origin="kovacad-cli", is_package=name == "kova")

    @staticmethod
    def create_module(spec):
        return None

    @staticmethod
    def exec_module(module):
        name = module.__name__
        file = "<kova/" + (name.partition(".")[2] or "__init__") + ".py>"
        exec(compile(SOURCES[name], file, "exec"), module.__dict__)


sys.meta_path.insert(0, _Finder)
