"""What is installed, and the component that each file comes with."""

import compilers
import installation
import this_build

LIBRARIES = this_build.INSTALLED_LIBRARIES
COMPLETIONS = {"bash": "bash-completion/completions/vaskdfc", "zsh": "zsh/site-functions/_vaskdfc",
               "fish": "fish/vendor_completions.d/vaskdfc.fish"}

# Some files of each component, which tell that it is the one that it is called after.
COMPONENTS = {
    "runtime": [f"{LIBRARIES}/libvaskdfc.so.11", f"{LIBRARIES}/libvaskdfc.so.{this_build.VERSION}", "share/doc/vaskdfc/LICENSE"],
    "development": [f"{LIBRARIES}/libvaskdfc.so", f"{LIBRARIES}/pkgconfig/vaskdfc.pc", "share/doc/vaskdfc/operations.md",
                    "share/doc/vaskdfc/examples/list_adapters.c", f"{this_build.INSTALLED_INCLUDE}/vaskdfc.h"],
    "tools": ["bin/vaskdfc", *(f"share/{path}" for path in COMPLETIONS.values())],
    "simulator": [f"{LIBRARIES}/libvmkmgmt.so.0", f"{LIBRARIES}/libvmkmgmt.so", f"{this_build.INSTALLED_INCLUDE}/vmkmgmt_sim.h"],
}


class Components(installation.InstalledTest):
    """The whole installation, and each component by itself."""

    def test_every_file_comes_with_exactly_one_of_them(self):
        found = []
        for component, some in COMPONENTS.items():
            prefix = self.folder / component
            installation.install(prefix, "--component", component)
            files = installation.files_below(prefix)
            self.assertEqual(set(some) - set(files), set(), f"{component} lacks these")
            found += files
        self.assertEqual(sorted(found), installation.files_below(self.prefix))


class Completions(installation.InstalledTest):
    """The scripts for shells."""

    def test_are_those_that_the_installed_tool_prints(self):
        for shell, path in COMPLETIONS.items():
            with self.subTest(shell):
                printed = compilers.check_run(self.prefix / "bin/vaskdfc", "completion", shell, environment=self.running)
                self.assertEqual((self.prefix / "share" / path).read_text(encoding="utf-8"), printed)


if __name__ == "__main__":
    this_build.main()
