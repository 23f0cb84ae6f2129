"""Projects of other people find the installed library with pkg-config or CMake, link it, and run; what does not fit is refused."""

import shutil

import compilers
import installation
import this_build

OUTSIDE = this_build.SOURCE / "tests/abi/outside"
VERSION = "11.4.1080.0"
MODELS = ["Kestar K5602-CNA", "Kestar K5603-FC16", "Kestar K5603-FC16", "Kestar K5601-FC8", "Kestar K5601-FC8"]
OTHER_WORD_SIZE = 96 - this_build.WORD_SIZE


class OutsideProject(installation.InstalledTest):
    """What both kinds of project have in common: a folder with a copy of it."""

    def project(self, name):
        """A copy of an outside project."""
        folder = self.folder / name
        shutil.copytree(OUTSIDE / name, folder, dirs_exist_ok=True)
        return folder


class PlainMake(OutsideProject):
    """A C project with a makefile, which asks pkg-config."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.building = cls.environment | {"PKG_CONFIG_PATH": str(cls.libraries / "pkgconfig")}

    def make(self, word_size):
        """Builds the project for a word size; returns its folder and what make did."""
        folder = self.project("make")
        shutil.copy(this_build.SOURCE / "tests/abi/application.c", folder)
        return folder, compilers.run("make", "-B", f"CC={this_build.C_COMPILER}", f"TARGET_ARCH=-m{word_size}", cwd=folder,
                                     environment=self.building)

    def test_is_built_without_another_word_about_the_platforms_library_and_runs(self):
        folder, made = self.make(this_build.WORD_SIZE)
        self.assertEqual((made.returncode, made.stderr), (0, ""))
        compilers.check_run(folder / "application", environment=self.running)

    def test_does_not_depend_on_the_platforms_library_itself(self):
        folder, _ = self.make(this_build.WORD_SIZE)
        needed = compilers.check_run("readelf", "--wide", "--dynamic", folder / "application")
        self.assertIn("libvaskdfc.so.11", needed)
        self.assertNotIn("libvmkmgmt", needed)

    def test_of_the_other_word_size_is_refused(self):
        _, made = self.make(OTHER_WORD_SIZE)
        self.assertNotEqual(made.returncode, 0)
        self.assertRegex(made.stderr, r"skipping incompatible \S*/libvaskdfc\.so|libvaskdfc\.so: file not recognized")

    def test_learns_the_version(self):
        def ask(*words):
            return compilers.run("pkg-config", *words, "vaskdfc", environment=self.building)

        self.assertEqual(ask("--modversion").stdout, f"{VERSION}\n")
        self.assertEqual(ask("--atleast-version=11.4").returncode, 0)
        self.assertNotEqual(ask("--atleast-version=12").returncode, 0)


class CMakeProject(OutsideProject):
    """A C++ project with a CMakeLists.txt, which asks for the package."""

    def configure(self, word_size=this_build.WORD_SIZE, version="11"):
        """Configures the project anew; returns the folder of its build and what CMake did."""
        build = self.folder / f"build-{word_size}-{version}"
        return build, compilers.run(this_build.CMAKE, "-S", self.project("cmake"), "-B", build,
                                    f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_CXX_FLAGS=-m{word_size}",
                                    f"-DWANTED_VERSION={version}", environment=self.environment)

    def assert_refused(self, done, sentence):
        """CMake found the package, did not take it, and says so."""
        self.assertNotEqual(done.returncode, 0)
        said = " ".join(done.stderr.split())
        self.assertIn("considered but not accepted", said)
        self.assertIn(sentence, said)

    def test_is_built_and_runs(self):
        build, configured = self.configure()
        self.assertEqual((configured.returncode, configured.stderr), (0, ""))
        self.assertIn(f"found version {VERSION}\n", configured.stdout)
        compilers.check_run(this_build.CMAKE, "--build", build, environment=self.environment)
        printed = compilers.check_run(build / "application", environment=self.running)
        self.assertEqual(printed.splitlines(), [VERSION, *MODELS])

    def test_that_wants_the_next_version_is_refused(self):
        self.assert_refused(self.configure(version="12")[1], f"vaskdfc-config.cmake, version: {VERSION}")

    def test_of_the_other_word_size_is_refused_in_a_sentence(self):
        self.assert_refused(self.configure(word_size=OTHER_WORD_SIZE)[1],
                            f"version: {VERSION} is built for {this_build.WORD_SIZE}-bit programs; "
                            f"this project makes {OTHER_WORD_SIZE}-bit ones")


class HostsOwnPlatform(OutsideProject):
    """A build that links the library of a host."""

    def test_names_the_folder_of_the_hosts_library_to_the_linker(self):
        build = self.folder / "host"
        compilers.check_run(this_build.CMAKE, "-S", this_build.SOURCE, "-B", build, f"-DVASKDFC_WORD_SIZE={this_build.WORD_SIZE}",
                            "-DVASKDFC_PLATFORM_LIBRARY=/opt/host/lib/libvmkmgmt.so", "-DBUILD_TESTING=OFF",
                            environment=self.environment)
        flags = compilers.check_run("pkg-config", "--libs", build / "cmake/package/vaskdfc.pc", environment=self.environment)
        self.assertIn("-Wl,-rpath-link,/opt/host/lib", flags.split())
        package = (build / "cmake/package/vaskdfc-config.cmake").read_text(encoding="utf-8")
        self.assertIn('"LINKER:-rpath-link,/opt/host/lib"', package)


if __name__ == "__main__":
    this_build.main()
