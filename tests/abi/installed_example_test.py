"""An application's author has nothing but what is installed: builds the example there, as its comment says, and runs it."""

import json
import shutil

import compilers
import installation
import this_build

EXAMPLE = "list_adapters.c"
HEADING = f"INDEX  {'MODEL':20}  {'PORT WWN':23}  STATE\n"


def adapter(board, model, wwpn, **more):
    """An adapter of a scenario."""
    return {"board": board, "model": model, "device": "0x5602", "sli_mode": 4, "serial_number": "Z1", "wwnn": wwpn, "wwpn": wwpn,
            "supported_speeds": ["16G"], **more}


# Two adapters on boards that are not neighbours; the second one is not connected. The first model's name takes up all the room that
# the table leaves for it.
SCENARIO = {
    "driver": {"name": "vaskfcoe", "version": "11.4"},
    "fabrics": [{"name": "a", "wwn": "10:00:00:00:00:00:00:0a"}],
    "adapters": [adapter(2, "Kestar K5602-CNA-LP4", "10:00:00:11:22:33:44:55", fabric="a", fc_id="0x010200"),
                 adapter(31, "Kestar K5602", "10:00:00:11:22:33:44:66")],
}
FIRST = "    0  Kestar K5602-CNA-LP4  10:00:00:11:22:33:44:55  online\n"
SECOND = "    1  Kestar K5602          10:00:00:11:22:33:44:66  link down\n"


class InstalledExample(installation.InstalledTest):
    """Everything happens in a folder of its own: the installation, a copy of the example, the program."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        shutil.copy(this_build.SOURCE / "examples" / EXAMPLE, cls.folder)
        compilers.check_run(this_build.C_COMPILER, f"-m{this_build.WORD_SIZE}", "-std=c99", *compilers.WARNINGS, EXAMPLE,
                            "-I", cls.prefix / this_build.INSTALLED_INCLUDE, "-L", cls.libraries, "-lvaskdfc",
                            "-o", "list_adapters", cwd=cls.folder, environment=cls.running)

    def list_adapters(self, **scenario):
        """Runs the example on a simulated host; returns exit code, standard output and standard error."""
        file = self.folder / "scenario.json"
        file.write_text(json.dumps(SCENARIO | scenario), encoding="utf-8")
        environment = self.running | {"VMKMGMT_SIM_SCENARIO": str(file)}
        done = compilers.run(self.folder / "list_adapters", environment=environment)
        return done.returncode, done.stdout, done.stderr

    def test_lists_index_model_wwn_and_state(self):
        self.assertEqual(self.list_adapters(), (0, HEADING + FIRST + SECOND, ""))

    def test_lists_the_adapters_of_the_host_that_the_simulator_stands_for_when_nothing_is_set(self):
        done = compilers.run(self.folder / "list_adapters", environment=self.running)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue(done.stdout.startswith(HEADING))
        self.assertGreaterEqual(len(done.stdout.splitlines()), 4)

    def test_goes_on_after_an_adapter_whose_port_cannot_be_read(self):
        fault = {"callback": "TREL_MGMT_HBA_PORTATTRIBUTES", "board": 2, "driver_status": "0x0BAD0039"}
        said = "adapter 0 (Kestar K5602-CNA-LP4): cannot read the attributes of its port: status 1\n"
        self.assertEqual(self.list_adapters(faults=[fault]), (1, HEADING + SECOND, said))

    def test_notices_that_an_adapter_does_not_answer_although_the_library_reports_success(self):
        fault = {"callback": "TREL_MGMT_HBA_ADAPTERATTRIBUTES", "board": 31, "platform_status": "0x7"}
        said = "adapter 1: the driver did not answer the query for its attributes\n"
        self.assertEqual(self.list_adapters(faults=[fault]), (1, HEADING + FIRST, said))

    def test_says_what_to_look_at_when_there_is_no_adapter_or_no_driver(self):
        said = "no adapter found: is the driver loaded, and is it of this library's version?\n"
        self.assertEqual(self.list_adapters(adapters=[]), (2, "", said))
        self.assertEqual(self.list_adapters(driver=SCENARIO["driver"] | {"interfaces": []}), (2, "", said))

    def test_installs_every_public_header_as_it_stands(self):
        for header in this_build.INCLUDE.rglob("*.h"):
            installed = self.prefix / this_build.INSTALLED_INCLUDE / header.relative_to(this_build.INCLUDE)
            self.assertEqual(installed.read_bytes(), header.read_bytes(), f"{installed} differs from {header}")

    def test_installs_libraries_that_remember_no_folder_of_this_machine(self):
        for library in ("libvaskdfc.so", "libvmkmgmt.so"):
            dynamic = compilers.check_run("readelf", "--wide", "--dynamic", self.libraries / library)
            self.assertIn("(SONAME)", dynamic)
            self.assertNotRegex(dynamic, r"\((?:RPATH|RUNPATH)\)", f"{library} names a folder to search in")


if __name__ == "__main__":
    this_build.main()
