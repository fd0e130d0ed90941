"""The measurements, one function each. What a program has measured is read back from the JSON it writes."""

import json
import pathlib
import re
import subprocess
import time

from surroundings import PERSONA, STEAM_ID, TICKET

IDENTITY = (STEAM_ID, PERSONA, TICKET)


def read(path):
    return json.loads(pathlib.Path(path).read_text())


def pipe_path(around, name):
    return rf"\\.\pipe\{name}" if around.windows else str(pathlib.Path(around.environment["TOLLMERE_PIPE_DIR"]) / name)


def answers(around, request_size, answer_size, rounds):
    """Round trips: the helper, the floor and the peers, all in one run."""
    output = around.work / "load.json"
    contenders = ["helper=TollmereSteamHelper", "libuv=bench-uv", "libuv_each=bench-uv-each", "asio=bench-asio",
                  "asio_each=bench-asio-each"]
    around.start_helper()
    around.start("pipe_floor", "bench-floor", request_size, answer_size)
    around.start("pipe_uv", "bench-uv", *IDENTITY)
    around.start("pipe_uv", "bench-uv-each", *IDENTITY, "each")
    around.start("pipe_asio", "bench-asio", *IDENTITY)
    around.start("pipe_asio", "bench-asio-each", *IDENTITY, "each")
    if around.node:
        script = around.path(around.binaries / "pipe_node.js")
        around.start(around.node, script, pipe_path(around, "bench-node"), *IDENTITY)
        contenders.append("node=bench-node")
    around.run("pipe_load", *contenders, "--floor", "floor=bench-floor", "--rounds", rounds, "--paced", rounds,
               "--limit", 600, "--output", around.path(output))
    return read(output)["contenders"]


def imports(around):
    """The libraries that the Windows program's import table names."""
    said = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", around.home / f"tollmere_steam_helper{around.suffix}"],
                          check=True, capture_output=True, text=True).stdout
    return re.findall(r"DLL Name: (\S+)", said)


def starts(around, request_size, answer_size, rounds):
    """From the process's start until its pipe can be opened."""
    output, configuration = around.work / "starts.json", around.work / "start.json"
    floor = around.path(around.binaries / f"pipe_floor{around.suffix}")
    library = around.path(around.home / "steam_api64.dll")
    names = ("SteamAppId", "SteamLocation")
    environment = {name: around.environment[name] for name in names}
    contenders = [
        ("helper", "TollmereSteamHelper", [around.path(around.home / f"tollmere_steam_helper{around.suffix}")]),
        ("empty program", "bench-empty", [floor, "bench-empty", str(request_size), str(answer_size)]),
        ("empty program with the stand-in", "bench-steam",
         [floor, "bench-steam", str(request_size), str(answer_size), library])]
    if around.windows:
        contenders += [(f"... and {what}", pipe, [floor, pipe, str(request_size), str(answer_size), library, *more])
                       for what, pipe, more in (("the helper's imports", "bench-imports", imports(around)),
                                                ("a window", "bench-window", [*imports(around), "window"]))]
    configuration.write_text(json.dumps([{"name": name, "pipe": pipe, "command": command, "environment": environment,
                                          "directory": around.path(around.home)} for name, pipe, command in contenders]))
    around.run("process_start", around.path(configuration), "--rounds", rounds, "--output", around.path(output))
    return {name: values["ms"] for name, values in read(output)["contenders"].items()}


# What is compared with each other runs in one process, and so within a second.
COMPARED = (r"^Read/.*/10$", r"^Read/.*/10000$", r"^Write/.*/10$", r"^Write/.*/10000$", r"^Log/.*/threads:1$",
            r"^Log/.*/threads:4$")
GROWTH = r"^(FramesQueued|LogLinesWaiting|StoreSaved)/"


def add_times(around, what, times):
    """Runs the benchmarks of these names once, and appends what each took, in nanoseconds."""
    output = around.work / "in_process.json"
    around.run("in_process_bench", f"--benchmark_filter={what}", f"--benchmark_out={around.path(output)}",
               "--benchmark_out_format=json", "--benchmark_min_time=0.05")
    for entry in read(output)["benchmarks"]:
        if entry.get("error_occurred"):
            raise RuntimeError(f"{entry['name']}: {entry['error_message']}")
        if entry["run_type"] == "iteration":
            scale = {"ns": 1, "us": 1e3, "ms": 1e6}[entry["time_unit"]]
            times.setdefault(entry["run_name"].replace("/real_time", ""), []).append(entry["real_time"] * scale)


def in_process(around, rounds):
    """The benchmarks inside of one process. A list of times for each; elements at the same place are of one round."""
    times = {}
    for _ in range(rounds):
        for what in COMPARED:
            add_times(around, what, times)
    for _ in range(3):
        add_times(around, GROWTH, times)
    return times


def process_figures(process_id):
    """Wake-ups, processor time in ns, and resident bytes of a process, as the Linux kernel counts them."""
    tasks = list(pathlib.Path(f"/proc/{process_id}/task").iterdir())
    wake_ups = sum(int(line.split()[1]) for task in tasks for line in (task / "status").read_text().splitlines()
                   if line.startswith("voluntary_ctxt_switches"))
    time_ns = sum(int((task / "schedstat").read_text().split()[0]) for task in tasks)
    resident = next(int(line.split()[1]) * 1024 for line in pathlib.Path(f"/proc/{process_id}/status").read_text()
                    .splitlines() if line.startswith("VmRSS"))
    return wake_ups, time_ns, resident


def idle(around, seconds):
    """A helper with a client that is connected and says nothing, and a bare loop with its pause."""
    processes = {"helper": around.start_helper(), "bare loop": around.start("tick_floor")}
    # Less than a frame, so it is not answered: the probe stays until its limit.
    client = around.start("probe", "--timeout", (seconds + 30) * 1000, "raw", "00", "--answers", 1)
    time.sleep(10)
    before, begin = {who: process_figures(process.pid) for who, process in processes.items()}, time.monotonic()
    time.sleep(seconds)
    after, passed = {who: process_figures(process.pid) for who, process in processes.items()}, time.monotonic() - begin
    if client.poll() is not None:
        raise RuntimeError("the client has not stayed")
    return {who: {"wake_ups_per_second": (after[who][0] - before[who][0]) / passed,
                  "processor_share": (after[who][1] - before[who][1]) / passed / 1e9,
                  "resident_bytes": after[who][2], "growth_bytes": after[who][2] - before[who][2]}
            for who in processes}


def sizes(around):
    """Bytes of the stripped programs and their sections."""
    result = {}
    for name in ("tollmere_steam_helper", "empty_program"):
        stripped = around.work / f"{name}.stripped"
        tool = "x86_64-w64-mingw32-" if around.windows else ""
        subprocess.run([f"{tool}strip", "-o", stripped, around.binaries / f"{name}{around.suffix}"], check=True)
        lines = subprocess.run([f"{tool}size", "-A", stripped], check=True, capture_output=True, text=True).stdout
        sections = [line.split() for line in lines.splitlines() if line.startswith(".")]
        result[name] = {"file": stripped.stat().st_size,
                        "sections": {section[0]: int(section[1]) for section in sections}}
    return result
