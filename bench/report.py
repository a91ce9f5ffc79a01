"""Tables and pictures of the figures that measure.py takes."""

import html
import re

# The greatest ratio that is aimed at, by what the figure's name matches; the first match counts.
AIMS = [
    (r"store/", 1.05),
    (r"operation(-listener)?(-on-disk)?/", 1.10),
    (r"session/.*sessions:1$", 1.5),
    (r"session/", 1.0),
    (r"tick/", 1.5),
    (r"cloud(-on-disk)?/", 1.05),
    (r"text/", 1.3),
    (r"event/", 2.0),
    (r"threads/.*threads:64$", 1.0),
    (r"start/", 1.05),
    (r"memory/per_", 2.0),
    (r"bus/check", 1.10),
    (r"bus/lookup/callers:1$", 1.6),
    (r"bus/lookup/callers:8$", 1.75),
    (r"bus/lookup/", 1.25),
    (r"flash/", 1.0),
]
UNITS = [("ns", 1e9, "s"), ("ns", 1e6, "ms"), ("ns", 1e3, "µs"), ("ns", 1, "ns")]


def aim(figure):
    return next((aim for pattern, aim in AIMS if re.match(pattern, figure["name"])), None)


def amount(value, unit):
    for base, scale, name in UNITS:
        if unit == base and value >= scale:
            return f"{value / scale:.3g} {name}" if value < 1000 * scale else f"{value / scale:.0f} {name}"
    return f"{value:,.0f} {unit}"


def verdict(figure):
    if figure["name"] == "memory/idle_host":
        return "512 KiB over", figure["ours"] - figure["floor"] <= 512
    if figure["name"] == "bus-memory/idle_daemon":
        return "1,024 KiB over", figure["ours"] - figure["floor"] <= 1024
    if figure["name"] == "bus-start/daemon_ready":
        return "10 ms over", figure["ours"] - figure["floor"] <= 10
    if figure["name"].startswith("size/"):
        return "160 KB", figure["ours"] <= 160000
    limit = aim(figure)
    if limit is None:
        return "", None
    return f"{limit:.2f}", round(figure["ratio"], 2) <= limit


def rows(figures):
    for figure in figures:
        limit, holds = verdict(figure)
        floor = figure.get("floor")
        yield [figure["name"], amount(floor, figure["unit"]) if floor is not None else "",
               amount(figure["ours"], figure["unit"]),
               f"{figure['ratio']:.2f}" if floor is not None else "",
               f"{figure['low']:.2f} to {figure['high']:.2f}" if floor is not None else "",
               limit, {True: "holds", False: "OVER", None: ""}[holds]]


HEAD = ["what", "floor", "ours", "ratio", "lowest to highest", "aim", ""]


def table(figures):
    lines = [HEAD, *rows(figures)]
    widths = [max(len(line[i]) for line in lines) for i in range(len(HEAD))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip()
                     for line in lines)


def markdown(figures):
    lines = [HEAD, ["---"] * len(HEAD), *rows(figures)]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines) + "\n"


def svg(width, height, parts):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
            f'font-family="sans-serif" font-size="11"><rect width="100%" height="100%" '
            f'fill="white"/>{"".join(parts)}</svg>\n')


def text(x, y, words, anchor="start"):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">{html.escape(words)}</text>'


def line(x1, y1, x2, y2, colour, width=1):
    return (f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" '
            f'stroke-width="{width}"/>')


def ratio_plot(figures):
    """A row for each figure: its ratio, the range of its repetitions and the aim."""
    highest = max(max(figure["high"], aim(figure) or 0) for figure in figures)
    scale = 360 / max(highest, 1.2)
    parts = []
    for tick in range(0, int(highest) + 2, 1 + int(highest) // 8):
        if tick * scale <= 400:
            parts += [line(420 + tick * scale, 20, 420 + tick * scale, 28 + 16 * len(figures),
                           "#999" if tick == 1 else "#ddd"),
                      text(420 + tick * scale, 14, str(tick), "middle")]
    for row, figure in enumerate(figures):
        y = 34 + 16 * row
        limit = aim(figure)
        parts.append(text(412, y + 4, figure["name"], "end"))
        parts.append(line(420 + figure["low"] * scale, y, 420 + figure["high"] * scale, y, "#58a", 3))
        parts.append(f'<circle cx="{420 + figure["ratio"] * scale:.1f}" cy="{y}" r="4" fill="#036"/>')
        if limit is not None:
            parts.append(line(420 + limit * scale, y - 6, 420 + limit * scale, y + 6, "#c22", 2))
    return svg(840, 40 + 16 * len(figures), parts)


def thread_plot(figures):
    """Calls per second by the number of threads: ours solid, the floor dashed, for each load."""
    loads = {}
    for figure in figures:
        _, load, threads = figure["name"].split("/")
        loads.setdefault(load, []).append((int(threads.split(":")[1]), figure))
    parts = []
    for place, (load, points) in enumerate(loads.items()):
        left = 60 + 260 * place
        most = max(1e9 / figure[who] for _, figure in points for who in ("ours", "floor"))
        parts += [text(left, 16, load), text(left - 4, 34, f"{most / 1e6:.3g} M/s", "end"),
                  line(left, 30, left, 190, "#999"), line(left, 190, left + 180, 190, "#999")]
        for who, dash in (("ours", ""), ("floor", 'stroke-dasharray="4 3"')):
            path = []
            for step, (threads, figure) in enumerate(points):
                path.append(f"{left + 45 * step:.1f},{190 - 160 * 1e9 / figure[who] / most:.1f}")
                parts.append(text(left + 45 * step, 204, str(threads), "middle"))
            parts.append(f'<polyline points="{" ".join(path)}" fill="none" stroke="#036" '
                         f'stroke-width="2" {dash}/>')
    parts.append(text(60, 226, "threads; solid: this component, dashed: the floor under one mutex"))
    return svg(60 + 260 * len(loads), 236, parts)


def write(figures, folder):
    groups = {}
    for figure in figures:
        if "ratio" in figure:
            groups.setdefault(figure["name"].split("/")[0], []).append(figure)
    pictures = {name: ratio_plot(members) for name, members in groups.items()}
    if "threads" in groups:
        pictures["threads-calls"] = thread_plot(groups["threads"])
    for name, picture in pictures.items():
        (folder / f"{name}.svg").write_text(picture)
    shown = "".join(f"\n![{name}]({name}.svg)\n" for name in pictures)
    (folder / "report.md").write_text("# Measurements\n\n" + markdown(figures) + shown)
