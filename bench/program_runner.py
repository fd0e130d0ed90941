"""Runs the programs of a part, as Linux programs or as Windows programs under Wine."""

import contextlib
import os
import pathlib
import shutil
import subprocess
import tempfile

STEAM_ID = "76561197960287930"
PERSONA = "Ada"
TICKET = "A7" * 980  # an answer of 2 KB
HELPER_PIPE = "TollmereSteamHelper"


class ProgramRunner:
    """`binaries` is the folder of the build, `work` an empty one. Ends what it has started when it is left."""

    def __init__(self, binaries, work, windows):
        self.binaries, self.work, self.windows = binaries, pathlib.Path(work), windows
        self.suffix = ".exe" if windows else ""
        self.environment = dict(os.environ, NODE_SKIP_PLATFORM_CHECK="1", SteamAppId="480",
                                SteamLocation=self.path(self.work), STEAM_STAND_IN_STEAM_ID=STEAM_ID,
                                STEAM_STAND_IN_PERSONA=PERSONA, STEAM_STAND_IN_TICKET=TICKET)
        self.stack = contextlib.ExitStack()

    def __enter__(self):
        for name in ("tollmere_steam_helper", "bench_empty", "sample_game"):
            shutil.copy(self.binaries / f"{name}{self.suffix}", self.work)
        shutil.copy(self.binaries / "steam_api64.dll", self.work)
        if self.windows:
            data = pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c/ProgramData"
        else:
            data = self.work / "program-data"
            self.environment.update(TOLLMERE_PROGRAM_DATA=str(data), TOLLMERE_PIPE_DIR=str(self.work),
                                    TOLLMERE_LOCAL_APP_DATA=str(self.work))
        # The log is written only where the installer has made its folder.
        (data / "Tollmere Games/Launcher").mkdir(parents=True, exist_ok=True)
        return self

    def __exit__(self, *error):
        self.stack.close()

    def path(self, path):
        """As the programs of the build write it."""
        return "Z:" + str(path).replace("/", "\\") if self.windows else str(path)

    def pipe(self, name):
        return rf"\\.\pipe\{name}" if self.windows else str(self.work / name)

    def program(self, name):
        """Of those that stand beside the helper, as the programs of the build write it."""
        return self.path(self.work / f"{name}{self.suffix}")

    def command(self, program, *arguments):
        """`program` is a path, or a name alone if it comes from the build."""
        if pathlib.Path(program).parent == pathlib.Path("."):
            program = self.binaries / f"{program}{self.suffix}"
        return [*(["wine"] if self.windows else []), str(program), *map(str, arguments)]

    def start(self, program, *arguments):
        """A process in the background, which is ended when the part is over."""
        process = subprocess.Popen(self.command(program, *arguments), env=self.environment, cwd=self.work,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.stack.callback(process.wait)
        self.stack.callback(process.kill)
        return process

    def start_helper(self):
        return self.start(self.work / f"tollmere_steam_helper{self.suffix}")

    def empty_program(self, pipe):
        """The arguments of the empty program that make it load what the helper imports."""
        libraries = []
        if self.windows:  # the others' imports are the same without that
            said = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", self.work / "tollmere_steam_helper.exe"],
                                  check=True, capture_output=True, text=True).stdout
            libraries = [line.split()[-1] for line in said.splitlines() if "DLL Name:" in line]
        return [pipe, self.path(self.work / "steam_api64.dll"), *libraries]

    def measure(self, *arguments):
        """What bench_measure has printed: lists of seconds by what and who."""
        # Not through pipes: the first program in a while hands its streams on to Wine's own processes.
        with tempfile.TemporaryFile("w+") as output, tempfile.TemporaryFile("w+") as errors:
            done = subprocess.run(self.command("bench_measure", *arguments), env=self.environment, cwd=self.work,
                                  stdin=subprocess.DEVNULL, stdout=output, stderr=errors, timeout=120)
            output.seek(0)
            errors.seek(0)
            if done.returncode != 0:
                raise RuntimeError(errors.read().strip() or f"bench_measure ends with {done.returncode}")
            lines = [line.split() for line in output.read().splitlines()]
        return {(what, who): [int(time) / 1e9 for time in times] for what, who, *times in lines}
