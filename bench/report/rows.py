"""From what was measured to the rows of the table: what, who, median, unit, spread, our ratio to it, goal."""

from statistics_of import median, ratio, spread


def compare(what, unit, ours, peers, goal=None):
    """One row for us and one for each peer. Goals are the largest ratio that is meant, by peer."""
    rows = [{"what": what, "who": "helper", "median": median(ours), "unit": unit, "spread": spread(ours)}]
    for who, theirs in peers.items():
        row = {"what": what, "who": who, "median": median(theirs), "unit": unit, "spread": spread(theirs),
               "ratio": ratio(ours, theirs)}
        if goal and who in goal:
            row["goal"] = goal[who]
        rows.append(row)
    return rows


def pipe_rows(contenders):
    """Where one answer is asked for at a time, the servers that write each answer by itself have nothing to say."""
    peers = [name for name in contenders if name != "helper" and not name.endswith("_each")]
    batch_peers = [name for name in contenders if name != "helper"]
    ahead = {name: 1.0 for name in peers if name != "floor"}
    rows = []

    def add(what, select, goal, peers=peers):
        values = {name: [value / 1000 for value in select(contenders[name])] for name in contenders}
        rows.extend(compare(what, "us", values["helper"], {name: values[name] for name in peers}, goal))

    for percentile in ("p50", "p95", "p99"):
        goal = {**ahead, "floor": 1.15} if percentile == "p50" else ahead
        add(f"answer, {percentile}", lambda c, p=percentile: c["full_speed"][f"{p}_ns"], goal)
    for percentile in ("p50", "p95", "p99"):
        goal = {**ahead, "floor": 1.15} if percentile == "p50" else ahead
        add(f"answer at 10/s, {percentile}", lambda c, p=percentile: [c["paced"][f"{p}_ns"]], goal)
    for size in ("1", "8", "64"):
        add(f"{size} frames in a write, each", lambda c, s=size: c["batch"][s]["ns_per_frame"],
            {name: 1.0 for name in batch_peers if name != "floor"}, batch_peers)
    return rows


def start_rows(starts):
    """The goal is a difference here: at most 5 ms above an empty program, the stand-in's own time excluded."""
    helper = starts["helper"]
    rows = compare("start until the pipe listens", "ms", helper, {n: v for n, v in starts.items() if n != "helper"})
    for what, base in (("start, above the empty program", "empty program with the stand-in"),
                       ("start, above its system parts", "... and a window")):
        if base in starts:
            difference = median([ours - theirs for ours, theirs in zip(helper, starts[base])])
            rows.append({"what": what, "who": "helper", "unit": "ms", "spread": 0.0, "median": difference, "most": 5})
    return rows


IN_PROCESS = [  # what, our name, peers, scale to us, goals
    ("read 10 events (2 KB)", "Read/{}/10", ("rapidjson_sax", "rapidjson_in_place", "simdjson", "nlohmann")),
    ("read 10,000 events (2 MB)", "Read/{}/10000", ("rapidjson_sax", "rapidjson_in_place", "simdjson", "nlohmann")),
    ("write 10 events", "Write/{}/10", ("rapidjson", "nlohmann")),
    ("write 10,000 events", "Write/{}/10000", ("rapidjson", "nlohmann")),
    ("1,000 log lines, 1 thread", "Log/{}/threads:1", ("spdlog", "spdlog_debugger")),
    ("1,000 log lines, 4 threads", "Log/{}/threads:4", ("spdlog", "spdlog_debugger")),
]


def in_process_rows(times):
    rows = []
    for what, pattern, peers in IN_PROCESS:
        values = {name: [value / 1000 for value in times[pattern.format(name)]] for name in ("tollmere", *peers)}
        goals = {name: 1.0 for name in peers if not (name == "simdjson" and "10,000" in what)}
        rows += compare(what, "us", values["tollmere"], {name: values[name] for name in peers}, goals)
    return rows


def idle_rows(idle):
    figures = [("idle: wake-ups", "wake_ups_per_second", 1, "/s", 31), ("idle: processor time", "processor_share", 100, "%", 0.05),
               ("idle: growth of memory", "growth_bytes", 1 / 1024, "KB", 0), ("resident memory", "resident_bytes", 1e-6, "MB", 5)]
    return [{"what": what, "who": who, "median": values[key] * scale, "unit": unit, "spread": 0.0,
             **({"most": most} if who == "helper" else {})}
            for what, key, scale, unit, most in figures for who, values in idle.items()]


def size_rows(sizes):
    return [{"what": "program, stripped", "who": who, "median": sizes[name]["file"] / 1000, "unit": "KB",
             "spread": 0.0, **({"most": 350} if who == "helper" else {})}
            for who, name in (("helper", "tollmere_steam_helper"), ("empty program", "empty_program"))]


def verdict(row):
    if "goal" in row:
        return "met" if row["ratio"] <= row["goal"] else "missed"
    if "most" in row:
        return "met" if row["median"] <= row["most"] else "missed"
    return ""


def as_text(rows):
    lines = [f"{'what':32} {'who':32} {'median':>10}    {'spread':>6} {'ratio':>6} {'goal':>6}"]
    last = None
    for row in rows:
        what = row["what"] if row["what"] != last else ""
        last = row["what"]
        share = f"{row['spread']:.0%}" if row["spread"] else ""
        of = f"{row['ratio']:.2f}" if "ratio" in row else ""
        goal = row.get("goal", row.get("most", ""))
        lines.append(f"{what:32} {row['who']:32} {row['median']:10,.2f} {row['unit']:2} {share:>6} {of:>6} {goal:>6} "
                     f"{verdict(row)}".rstrip())
    return "\n".join(lines)
