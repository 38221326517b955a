"""Pictures as SVG, with the standard library alone."""
import math
from html import escape

WIDTH, HEIGHT = 640, 360
LEFT, RIGHT, TOP, BOTTOM = 70, 20, 40, 56
COLOURS = ("#1f5fa8", "#c4531b", "#2f7d3b", "#7a3f98", "#8a6d00")


def _start(title):
    return [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
            f'font-family="sans-serif" font-size="12" role="img">',
            f"<title>{escape(title)}</title>",
            f'<rect width="{WIDTH}" height="{HEIGHT}" fill="#ffffff"/>',
            f'<text x="{LEFT}" y="20" font-size="14" fill="#222222">{escape(title)}</text>']


def _text(x, y, text, anchor="middle", more=""):
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="#444444"{more}>'
            f"{escape(text)}</text>")


def _short(number):
    if number >= 1e9:
        return f"{number / 1e9:g}G"
    if number >= 1e6:
        return f"{number / 1e6:g}M"
    if number >= 1e3:
        return f"{number / 1e3:g}k"
    return f"{number:g}"


def _nice(value):
    """The next higher one of 1, 2, 2.5, 5 and their tenfolds."""
    power = 10.0 ** math.floor(math.log10(value))
    return next(power * step for step in (1, 2, 2.5, 5, 10) if power * step >= value)


def _decades(low, high):
    first, last = math.floor(math.log10(low)), math.ceil(math.log10(high))
    return [10.0 ** power for power in range(first, max(last, first + 1) + 1)]


def _dashes(i):
    """Every second curve leaves gaps, in which one that lies below it can be seen."""
    return ' stroke-dasharray="6 6"' if i % 2 else ""


def curves(title, x_name, y_name, series):
    """Both axes logarithmic; 0 stands where 1 would. `series` is (name, [(x, y)]) pairs."""
    from_zero = any(x == 0 for _, points in series for x, _ in points)
    series = [(name, [(max(x, 1), y) for x, y in points]) for name, points in series]
    xs = [x for _, points in series for x, _ in points]
    ys = [y for _, points in series for _, y in points]
    x_ticks, y_ticks = _decades(min(xs), max(xs)), _decades(min(ys), max(ys))

    def place(value, ticks, begin, end):
        low, high = math.log10(ticks[0]), math.log10(ticks[-1])
        return begin + (math.log10(value) - low) / (high - low) * (end - begin)

    right, bottom = WIDTH - RIGHT, HEIGHT - BOTTOM
    lines = _start(title)
    for tick in x_ticks:
        x = place(tick, x_ticks, LEFT, right)
        lines.append(f'<path d="M{x:.1f} {TOP}V{bottom}" stroke="#e4e4e4"/>')
        lines.append(_text(x, bottom + 18, "0" if from_zero and tick == 1 else _short(tick)))
    for tick in y_ticks:
        y = place(tick, y_ticks, bottom, TOP)
        lines.append(f'<path d="M{LEFT} {y:.1f}H{right}" stroke="#e4e4e4"/>')
        lines.append(_text(LEFT - 6, y + 4, _short(tick), "end"))
    lines.append(_text((LEFT + right) / 2, HEIGHT - 14, x_name))
    lines.append(_text(16, (TOP + bottom) / 2, y_name,
                       more=f' transform="rotate(-90 16 {(TOP + bottom) / 2})"'))
    for i, (name, points) in enumerate(series):
        colour = COLOURS[i % len(COLOURS)]
        places = [(place(x, x_ticks, LEFT, right), place(y, y_ticks, bottom, TOP))
                  for x, y in points]
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in places)
        lines.append(f'<polyline points="{path}" fill="none" stroke="{colour}" '
                     f'stroke-width="2"{_dashes(i)}/>')
        lines += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>' for x, y in places]
        y = TOP + 14 + 16 * i
        lines.append(f'<path d="M{LEFT + 12} {y - 4}h18" stroke="{colour}" '
                     f'stroke-width="2"{_dashes(i)}/>')
        lines.append(_text(LEFT + 36, y, name, "start"))
    return "\n".join(lines + ["</svg>", ""])


def bars(title, y_name, groups, series):
    """`series` is (name, [value for each group]) pairs."""
    right, bottom = WIDTH - RIGHT, HEIGHT - BOTTOM
    top_value = _nice(max(value for _, values in series for value in values))
    lines = _start(title)
    for step in range(6):
        value = top_value * step / 5
        y = bottom - (bottom - TOP) * step / 5
        lines.append(f'<path d="M{LEFT} {y:.1f}H{right}" stroke="#e4e4e4"/>')
        lines.append(_text(LEFT - 6, y + 4, f"{value:.2f}", "end"))
    lines.append(_text(16, (TOP + bottom) / 2, y_name,
                       more=f' transform="rotate(-90 16 {(TOP + bottom) / 2})"'))
    room = (right - LEFT) / len(groups)
    width = room * 0.8 / len(series)
    for g, group in enumerate(groups):
        lines.append(_text(LEFT + room * (g + 0.5), bottom + 18, group))
        for i, (_, values) in enumerate(series):
            height = (bottom - TOP) * max(values[g], 0) / top_value
            x = LEFT + room * (g + 0.1) + width * i
            lines.append(f'<rect x="{x:.1f}" y="{bottom - height:.1f}" width="{width - 1:.1f}" '
                         f'height="{height:.1f}" fill="{COLOURS[i % len(COLOURS)]}"/>')
    for i, (name, _) in enumerate(series):
        x = LEFT + 8 + i * (right - LEFT) / len(series)
        colour = COLOURS[i % len(COLOURS)]
        lines.append(f'<rect x="{x:.1f}" y="{HEIGHT - 22}" width="10" height="10" '
                     f'fill="{colour}"/>')
        lines.append(_text(x + 16, HEIGHT - 13, name, "start"))
    return "\n".join(lines + ["</svg>", ""])
