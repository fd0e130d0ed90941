"""Where a run happens and how its programs are started: as Linux programs, or as Windows programs under Wine."""

import contextlib
import os
import pathlib
import shutil
import subprocess
import sys

STEAM_ID = "76561197960287930"
PERSONA = "Ada"
TICKET = "A7" * 980  # an answer of 2 KB


class Surroundings:
    """`binaries` is the folder of the build, `work` an empty one. Ends what it has started when it is left."""

    def __init__(self, binaries, work, windows, node):
        self.binaries, self.work = pathlib.Path(binaries).resolve(), pathlib.Path(work).resolve()
        self.windows = windows
        self.node = node and pathlib.Path(node).resolve()
        self.suffix = ".exe" if windows else ""
        self.environment = dict(os.environ, NODE_SKIP_PLATFORM_CHECK="1", SteamAppId="480", SteamLocation=self.path(self.work),
                                STEAM_STAND_IN_STEAM_ID=STEAM_ID, STEAM_STAND_IN_PERSONA=PERSONA,
                                STEAM_STAND_IN_TICKET=TICKET)
        self.stack = contextlib.ExitStack()

    def __enter__(self):
        self.home = self.folder("home")
        for name in (f"tollmere_steam_helper{self.suffix}", "steam_api64.dll"):
            shutil.copy(self.binaries / name, self.home)
        if self.windows:
            data = pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c/ProgramData"
        else:
            data = self.folder("program-data")
            self.environment.update(TOLLMERE_PROGRAM_DATA=str(data), TOLLMERE_PIPE_DIR=str(self.folder("pipes")),
                                    TOLLMERE_LOCAL_APP_DATA=str(self.folder("local")))
        # The log is written only where the installer has made its folder.
        (data / "Tollmere Games/Launcher").mkdir(parents=True, exist_ok=True)
        return self

    def __exit__(self, *error):
        self.stack.close()

    def folder(self, name):
        folder = self.work / name
        folder.mkdir(exist_ok=True)
        return folder

    def path(self, path):
        """As the programs of the build write it."""
        return "Z:" + str(path).replace("/", "\\") if self.windows else str(path)

    def command(self, program, *arguments):
        program = pathlib.Path(program)
        if program.parent == pathlib.Path("."):
            program = self.binaries / f"{program}{self.suffix}"
        return [*(["wine"] if self.windows else []), str(program), *map(str, arguments)]

    def run(self, program, *arguments):
        """Says nothing, unless the program fails: then what that has said."""
        done = subprocess.run(self.command(program, *arguments), env=self.environment, cwd=self.work, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        if done.returncode != 0:
            sys.stderr.write(done.stderr)
            done.check_returncode()

    def start(self, program, *arguments):
        """A process in the background, which is ended at the end of the run if it hasn't ended by itself."""
        process = subprocess.Popen(self.command(program, *arguments), env=self.environment, cwd=self.work,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.stack.callback(process.wait)
        self.stack.callback(process.kill)
        return process

    def start_helper(self):
        return self.start(self.home / f"tollmere_steam_helper{self.suffix}")
