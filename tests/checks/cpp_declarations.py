"""A reader of C++ that knows enough of the language to list what files of this program declare and define:
functions, members of classes, variables, and the statics inside functions. It reads tokens, follows
braces, and takes the code for as regular as the formatter leaves it. Macros aren't expanded."""

import dataclasses
import re

TOKEN = re.compile(
    r"""(?P<space>\s+)
  | (?P<comment>//(?:\\\n|[^\n])*|/\*.*?\*/)
  | (?P<raw>(?:u8|[uUL])?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)")
  | (?P<string>(?:u8|[uUL])?"(?:\\.|[^"\\\n])*"|(?:u8|[uUL])?'(?:\\.|[^'\\\n])*')
  | (?P<number>\.?\d(?:'?[\w.]|(?<=[eEpP])[+-])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign>::|->\*?|\+\+|--|\+=|-=|\*=|/=|%=|&=|\|=|\^=|<<=|>>=|==|!=|<=>|<=|>=|&&|\|\||\.\.\.|.)""",
    re.VERBOSE | re.DOTALL)
DIRECTIVE = re.compile(r"^[ \t]*#(?:\\\n|[^\n])*", re.MULTILINE)
PAIRS = {"(": ")", "[": "]", "{": "}"}


class token(str):
    """A piece of the text that knows its line."""
    line = 0
    kind = ""


def tokens_of(text):
    # Directives are blanked, line by line, so that the numbers of the lines stay right.
    text = DIRECTIVE.sub(lambda found: "\n" * found[0].count("\n"), text)
    result, line = [], 1
    for found in TOKEN.finditer(text):
        kind = found.lastgroup if found.lastgroup != "mark" else "raw"
        if kind not in ("space", "comment"):
            piece = token(found[0])
            piece.line, piece.kind = line, kind
            result.append(piece)
        line += found[0].count("\n")
    return result


@dataclasses.dataclass
class function:
    name: str          # with its classes, but without zeb::
    line: int
    parameters: tuple  # types as texts
    has_body: bool
    hidden: bool       # in an unnamed namespace, or static
    here: bool         # inline, a template, constexpr, defaulted or deleted: at home wherever it stands
    body: tuple = (0, 0)  # the tokens of its body, as a range


@dataclasses.dataclass
class variable:
    name: str
    line: int
    type: str
    constant: bool
    extern: bool
    hidden: bool
    pointer: bool = False


def close_of(tokens, start):
    """The place of the bracket that closes the one at `start`."""
    opening, closing, depth = tokens[start], PAIRS[tokens[start]], 0
    for i in range(start, len(tokens)):
        if tokens[i] == opening:
            depth += 1
        elif tokens[i] == closing:
            depth -= 1
            if depth == 0:
                return i
    return len(tokens) - 1


def angle_close(tokens, start):
    """The place of the ">" that closes the "<" at `start`; `start` itself if that is a comparison."""
    depth, i = 0, start
    while i < len(tokens):
        if tokens[i] in PAIRS:
            i = close_of(tokens, i)
        elif tokens[i] == "<":
            depth += 1
        elif tokens[i] == ">":
            depth -= 1
            if depth == 0:
                return i
        elif tokens[i] in (";", "}", ")"):
            return start
        i += 1
    return start


def split_at_commas(tokens):
    parts, part, i = [], [], 0
    while i < len(tokens):
        last = i
        if tokens[i] in PAIRS:
            last = close_of(tokens, i)
        elif tokens[i] == "<" and i and tokens[i - 1].kind == "name":
            last = angle_close(tokens, i)
        if tokens[i] == ",":
            parts.append(part)
            part = []
        else:
            part += tokens[i:last + 1]
        i = last + 1
    return parts + [part] if part or parts else []


PLAIN_WORDS = {"const", "volatile", "unsigned", "signed", "int", "char", "long", "short", "bool", "double", "float",
               "void", "auto"}


def parameter_type(part):
    """The type of a parameter without its name, its default and what doesn't tell overloads apart."""
    if "=" in part:
        part = part[:part.index("=")]
    part = [p for p in part if p not in ("struct", "zeb")]
    while part and part[-1] == "]":
        part = part[:len(part) - 2]
    # The name of a function pointer stands inside.
    text = "".join(part)
    if "(*" in text or "(&" in text:
        return re.sub(r"\(([*&])\w*\)", r"(\1)", text)
    rest = [p for p in part[:-1] if p != "const"]
    if len(part) > 1 and part[-1].kind == "name" and part[-1] not in PLAIN_WORDS and rest and part[-2] != "::":
        part = part[:-1]
    return " ".join(p for p in part if p not in ("const",) or "&" in part or "*" in part)


class declarations:
    """Everything that one file declares at the level of namespaces and classes."""

    def __init__(self, text):
        self.tokens = tokens_of(text)
        self.functions, self.variables, self.types = [], [], {}
        self.scope(0, len(self.tokens), [], False, False)

    def scope(self, i, end, classes, hidden, template):
        """Reads the declarations from `i` to `end`, which stand inside `classes`."""
        while i < end:
            i = self.declaration(i, end, classes, hidden, template)

    def skip(self, i, end):
        """The place after the semicolon that ends what begins at `i`."""
        while i < end and self.tokens[i] != ";":
            i = close_of(self.tokens, i) if self.tokens[i] in PAIRS else i
            i += 1
        return i + 1

    def declaration(self, i, end, classes, hidden, template):
        t = self.tokens
        word = t[i]
        if word in (";", "}"):
            return i + 1
        if word in ("public", "private", "protected") and t[i + 1] == ":":
            return i + 2
        if word == "[" and t[i + 1] == "[":
            return close_of(t, i) + 1
        if word == "inline" and t[i + 1] == "namespace":
            return i + 1
        if word == "namespace":
            brace = i
            while t[brace] not in ("{", ";", "="):
                brace += 1
            if t[brace] != "{":
                return self.skip(i, end)
            close = close_of(t, brace)
            self.scope(brace + 1, close, classes, hidden or brace == i + 1, template)
            return close + 1
        if word == "extern" and t[i + 1].kind == "string":
            if t[i + 2] != "{":
                return i + 2
            close = close_of(t, i + 2)
            self.scope(i + 3, close, classes, hidden, template)
            return close + 1
        if word in ("using", "typedef", "static_assert", "friend"):
            return self.skip(i, end)
        if word == "template":
            if t[i + 1] != "<":
                return self.skip(i, end)
            return self.declaration(angle_close(t, i + 1) + 1, end, classes, hidden, True)
        if word == "requires" and t[i + 1] == "(":
            return self.declaration(close_of(t, i + 1) + 1, end, classes, hidden, template)
        return self.entity(i, end, classes, hidden, template)

    def entity(self, i, end, classes, hidden, template):
        """A type, a function or variables."""
        t, start, type_word = self.tokens, i, None
        while i < end:
            word = t[i]
            if word in ("struct", "class", "union", "enum") and type_word is None:
                type_word = i
            if word == "operator":
                i += 1
                while t[i] != "(" or (t[i - 1] == "operator" and t[i + 1] == ")"):
                    i += 2 if t[i] == "(" else 1
                return self.function(start, i, end, classes, hidden, template)
            if word == "<" and t[i - 1].kind == "name":
                i = angle_close(t, i)
            elif word == "[":
                i = close_of(t, i)
            elif word == "(":
                if t[i - 1] in ("alignas", "decltype", "__attribute__", "noexcept"):
                    i = close_of(t, i)
                elif t[i + 1] in ("*", "&") and t[close_of(t, i) + 1] in ("(", "["):
                    return self.variable(start, i, end, classes, hidden, t[i + 2])
                else:
                    return self.function(start, i, end, classes, hidden, template)
            elif word == "{":
                if type_word is not None:
                    return self.type(start, type_word, i, end, classes, hidden, template)
                return self.variable(start, i, end, classes, hidden, t[i - 1])
            elif word in ("=", ";", ","):
                if word == ";" and type_word == start and i - start == 2:
                    return i + 1  # a forward declaration
                return self.variable(start, i, end, classes, hidden, self.name_before(i))
            elif word == ":" and type_word is None:
                return self.variable(start, i, end, classes, hidden, t[i - 1])
            i += 1
        return end

    def name_before(self, i):
        i -= 1
        while self.tokens[i] == "]":
            depth = 0
            while True:
                depth += {"]": 1, "[": -1}.get(self.tokens[i], 0)
                i -= 1
                if depth == 0:
                    break
        return self.tokens[i]

    def type(self, start, type_word, brace, end, classes, hidden, template):
        t = self.tokens
        close = close_of(t, brace)
        name = t[type_word + 1]
        if t[type_word] != "enum":
            words = [w for w in t[type_word + 1:brace] if w.kind == "name" and w not in ("final", "alignas")]
            if ":" in t[type_word + 1:brace]:
                colon = t.index(":", type_word, brace)
                words = [w for w in t[type_word + 1:colon] if w.kind == "name" and w not in ("final", "alignas")]
            name = words[-1] if words else token("")
            self.types[str(name)] = (type_word, brace, close)
            self.scope(brace + 1, close, classes + [name], hidden, template)
        if t[close + 1] == ";":
            return close + 2
        return self.variable(start, close + 1, end, classes, hidden, t[close + 1], str(name))

    def variable(self, start, i, end, classes, hidden, name, type_name=None):
        t = self.tokens
        words = t[start:i]
        after = self.skip(i, end)
        if isinstance(name, token) and name.kind == "name" and not classes:
            stars = [k for k, word in enumerate(words) if word == "*"]
            depth, plain = 0, []
            for k, word in enumerate(words):
                depth += {"<": 1, ">": -1}.get(word, 0)
                if depth == 0 and word != ">":
                    plain.append((k, word))
            constant = any(word in ("constexpr", "consteval") for word in words) or any(
                word == "const" and (not stars or k > stars[-1]) for k, word in plain)
            type_words = [w for k, w in plain if w.kind == "name" and w != name and w not in
                          ("extern", "static", "inline", "const", "constinit", "struct", "thread_local", "std")]
            self.variables.append(variable(
                str(name), name.line, type_name or (type_words[-1] if type_words else ""), constant,
                "extern" in words, hidden or "static" in words))
            self.variables[-1].pointer = bool(stars) or "(" in t[start:i + 1]
        return after

    def function(self, start, paren, end, classes, hidden, template):
        t = self.tokens
        close = close_of(t, paren)
        # The name, with the classes before it.
        k = paren - 1
        if "operator" in t[start:paren]:
            k = start + t[start:paren].index("operator")
            name = "".join(t[k:paren])
            line = t[k].line
        else:
            name, line = str(t[k]), t[k].line
        while k - 2 >= start and t[k - 1] == "::":
            k -= 2
            if t[k] != "zeb":
                name = f"{t[k]}::{name}"
        if t[k - 1] == "~":
            name = "~" + name
        while k - 1 > start and t[k - 1] == "~" and t[k - 2] == "::":
            k -= 3
            name = f"{t[k]}::{name}"
        i, has_body, here = close + 1, False, template
        while i < end and t[i] not in (";", "{"):
            if t[i] == ":":
                i += 1
                while t[i] not in (";",):
                    while t[i] not in PAIRS or t[i] == "[":
                        i += 1
                    i = close_of(t, i) + 1
                    if t[i] == "...":
                        i += 1
                    if t[i] != ",":
                        break
                continue
            if t[i] in ("default", "delete"):
                has_body = True
            here = here or (t[i] == "=" and t[i + 1] == "0")
            i = close_of(t, i) + 1 if t[i] in PAIRS else i + 1
        words = t[start:paren]
        here = here or any(w in ("inline", "constexpr", "consteval") for w in words)
        body = (i, i)
        if i < end and t[i] == "{":
            has_body, body = True, (i, close_of(t, i))
        full = "::".join([str(c) for c in classes if c] + [name])
        parameters = tuple(parameter_type(part) for part in split_at_commas(t[paren + 1:close]))
        parameters = () if parameters == ("void",) else parameters
        self.functions.append(function(full, line, parameters, has_body, hidden or ("static" in words and not classes),
                                       here, body))
        return body[1] + 1
