"""Finds the places where a source can be changed into a wrong one, and the changes."""
import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<space>\s+|//[^\n]*|/\*.*?\*/|\#(?:[^\n\\]|\\.)*)
      | (?P<text>"(?:[^"\\\n]|\\.)*")
      | (?P<char>'(?:[^'\\\n]|\\.)*')
      | (?P<number>0[xX][0-9a-fA-F']+[uUlL]*|\d[\d']*(?:\.\d+)?(?:[eE][+-]?\d+)?[fFuUlL]*)
      | (?P<name>[A-Za-z_]\w*)
      | (?P<sign><<=|>>=|\.\.\.|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|::|.)""",
    re.VERBOSE | re.DOTALL)

# A sign between spaces is an operator; the formatter sees to it.
OPERATORS = {
    "<": ["<=", ">="], "<=": ["<"], ">": [">=", "<="], ">=": [">"], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"],
    "&": ["|"], "|": ["&"], "<<": [">>"], ">>": ["<<"], "+=": ["-=", "="], "-=": ["+="],
}
KEYWORDS = {
    "return", "using", "const", "static", "constexpr", "struct", "enum", "class", "namespace",
    "template", "public", "private", "protected", "friend", "auto", "if", "for", "while", "switch",
    "case", "default", "do", "else", "try", "catch", "typedef", "extern", "break", "continue",
    "static_assert", "virtual", "explicit", "inline", "goto",
}
BEFORE_BLOCK = {")", "else", "do", "try", "const", "noexcept", "override", "]", ";", "}", ":"}
CLOSING = {"(": ")", "[": "]", "{": "}"}


@dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    kind: str
    start: int
    end: int
    new: str
    before: str  # the lines that change, as they are
    after: str  # and as they become

    def apply(self, source):
        return source[:self.start] + self.new + source[self.end:]


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


def tokens_of(source):
    found = (Token(m.lastgroup, m.group(), m.start(), m.end()) for m in TOKEN.finditer(source))
    return [token for token in found if token.kind != "space"]


def enumerators(sources):
    """For each enumerator the one that takes its place: the next of its enumeration and prefix."""
    following = {}
    for source in sources:
        for body in re.findall(r"enum(?: class)? \w+[^{;]*\{(.*?)\}", source, re.DOTALL):
            names = re.findall(r"^\s*(\w+)(?= =|,|$)|(?<=, )(\w+)(?= =|,)",
                               re.sub(r"//[^\n]*", "", body), re.MULTILINE)
            families = {}
            for name in (a or b for a, b in names):
                families.setdefault(re.match(r"[a-z]+_?", name).group(), []).append(name)
            for family in families.values():
                for i, name in enumerate(family):
                    if len(family) > 1:
                        following[name] = family[(i + 1) % len(family)]
    return following


def other_numbers(text):
    digits, suffix = re.fullmatch(r"(.*?)([uUlLfF]*)", text).groups()
    if text[:2].lower() == "0x":
        digits, suffix = re.fullmatch(r"(0[xX][0-9a-fA-F']+)([uUlL]*)", text).groups()
        value = int(digits.replace("'", ""), 16)
        return [f"0x{value + 1:X}{suffix}"] + ([f"0x{value - 1:X}{suffix}"] if value else [])
    if "." in digits or "e" in digits.lower():
        value = float(digits)
        return [f"{value * 2!r}{suffix}", f"{value + 1!r}{suffix}"]
    value = int(digits.replace("'", ""))
    return [f"{value + 1}{suffix}", f"{value - 1}{suffix}"]


class Finder:
    """All mutants of one file."""

    def __init__(self, file, source, following):
        self.file, self.source, self.following = file, source, following
        self.tokens = tokens_of(source)
        self.partner = self.match_brackets()
        self.blocks = self.find_blocks()
        self.skipped = self.find_skipped()
        self.mutants = []

    def match_brackets(self):
        partner, stack = {}, []
        for i, token in enumerate(self.tokens):
            if token.text in CLOSING:
                stack.append(i)
            elif token.text in CLOSING.values() and stack:
                partner[stack[-1]] = i
                partner[i] = stack.pop()
        return partner

    def find_blocks(self):
        """Opening braces of code, as against initialisers, classes and enumerations."""
        blocks = set()
        for i, token in enumerate(self.tokens):
            before = self.tokens[i - 1].text if i else ";"
            if token.text == "{" and (before in BEFORE_BLOCK or i - 1 in blocks):
                blocks.add(i)
        return blocks

    def find_skipped(self):
        """Tokens of what no test can judge: static assertions, symbol names, template headers."""
        skipped = set()
        for i, token in enumerate(self.tokens):
            if token.text in ("static_assert", "__asm__", "__attribute__") or (
                    token.text == "extern" and self.tokens[i + 1].kind == "text"):
                last = self.partner.get(i + 1, i + 1)
                skipped.update(range(i, last + 1))
            elif token.text == "template":
                skipped.add(i + 1)
        return skipped

    def add(self, kind, start, end, new):
        first = self.source.rfind("\n", 0, start) + 1
        last = self.source.find("\n", end)
        last = len(self.source) if last < 0 else last
        before = self.source[first:last]
        after = self.source[first:start] + new + self.source[end:last]
        line = self.source.count("\n", 0, start) + 1
        self.mutants.append(Mutant(self.file, line, kind, start, end, new,
                                   " ".join(before.split()), " ".join(after.split())))

    def spaced(self, token):
        return self.source[token.start - 1].isspace() and self.source[token.end].isspace()

    def find(self):
        for i, token in enumerate(self.tokens):
            if i in self.skipped:
                continue
            if token.kind == "number":
                for new in other_numbers(token.text):
                    self.add("number", token.start, token.end, new)
            elif token.kind == "text":
                new = '"X' + token.text[1:]
                self.add("text", token.start, token.end, new)
            elif token.kind == "char":
                self.add("character", token.start, token.end, "'~'")
            elif token.kind == "sign":
                self.operator(token)
            elif token.kind == "name":
                self.name(i, token)
            self.statement(i)
            self.swap(i)
        return self.mutants

    def operator(self, token):
        if self.spaced(token):
            for new in OPERATORS.get(token.text, []):
                self.add("operator", token.start, token.end, new)
        if token.text in ("++", "--"):
            self.add("operator", token.start, token.end, "--" if token.text == "++" else "++")
        if token.text == "!" or (token.text == "~" and not self.source[token.end].isspace()):
            self.add("negation", token.start, token.end, "")

    def name(self, i, token):
        text = token.text
        after = self.tokens[i + 1].text if i + 1 < len(self.tokens) else ""
        before = self.tokens[i - 1].text if i else ""
        if text in ("true", "false"):
            self.add("constant", token.start, token.end, "false" if text == "true" else "true")
        elif text in ("break", "continue"):
            self.add("jump", token.start, token.end, "continue" if text == "break" else "break")
        elif text in ("if", "while") and after == "(" and before != "constexpr":
            opening, closing = self.tokens[i + 1], self.tokens[self.partner[i + 1]]
            condition = self.source[opening.end:closing.start]
            self.add("condition", opening.end, closing.start, f"!({condition})")
        elif text == "case":
            colon = next(t for t in self.tokens[i:] if t.text == ":")
            self.add("case", token.start, colon.end, "")
        elif text == "fallthrough":
            bracket = self.tokens[i - 2]
            self.add("jump", bracket.start, self.tokens[i + 2].end, "break")
        elif text in self.following and after != "=":
            self.add("enumerator", token.start, token.end, self.following[text])

    def statement(self, i):
        """Leaves out a statement: a call, an assignment, a throw, a return of nothing."""
        token, before = self.tokens[i], self.tokens[i - 1].text if i else "{"
        in_block = before in (";", "}", ":") or (before == "{" and i - 1 in self.blocks)
        returns = token.text == "return" and self.tokens[i + 1].text == ";"
        if not in_block or (token.text in KEYWORDS and not returns) or token.text in "{}[];:)":
            return
        if not self.enclosed_by_block(i):
            return
        end = i
        while end < len(self.tokens) and self.tokens[end].text != ";":
            end = self.partner.get(end, end) + 1 if self.tokens[end].text in CLOSING else end + 1
        words = self.source[token.start:self.tokens[end].start] if end < len(self.tokens) else ""
        declares = re.match(r"[\w:]+(<[^=]*>)?[ &*]+\w+\s*([={(;]|$)", words)
        if words and (not declares or token.text == "throw" or returns):
            self.add("statement", token.start, self.tokens[end].start, "")

    def enclosed_by_block(self, i):
        k = i - 1
        while k >= 0 and self.tokens[k].text not in CLOSING:
            k = self.partner.get(k, k) - 1
        return k in self.blocks

    def swap(self, i):
        """Exchanges the first two of a list: bytes, arguments."""
        if self.tokens[i].text not in ("(", "{") or i in self.blocks or i not in self.partner:
            return
        parts, begin, k = [], i + 1, i + 1
        while k <= self.partner[i]:
            text = self.tokens[k].text
            if text in CLOSING and k in self.partner:
                k = self.partner[k]
            elif text == "," or k == self.partner[i]:
                if k > begin:
                    parts.append((self.tokens[begin].start, self.tokens[k - 1].end))
                begin = k + 1
            elif text == ";":
                return
            k += 1
        if len(parts) < 2:
            return
        (a, b), (c, d) = parts[:2]
        first, second = self.source[a:b], self.source[c:d]
        parameter = "[&]" in first + second or re.fullmatch(r"(const |unsigned )*[\w:<>]+[&* ]+\w*|\w+ = .*|this", first)
        if first != second and not parameter:
            self.add("order", a, d, second + self.source[b:c] + first)


def mutants_of(file, source, following):
    return Finder(file, source, following).find()
