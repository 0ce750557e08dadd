"""Random scripts of the macro language: mostly well formed, with damage. They end by themselves:
jumps lead forward only, loops are short."""

NUMBERS = ["0", "1", "2", "3", "5", "7", "29", "30", "999", "1000", "2147483647", "2147483648",
           "4294967296", "99999999999999999999999", "0.5", "2.5", ".5", "1e5", "1.2.3", "-1", "-0.5"]
NAMES = ["x", "y", "a", "b", "m", "d", "s", "v" * 50, "unknown", "length", "if", "set"]
FUNCTIONS = ["ntax", "ntrees", "freevars", "listsize", "exstatus", "time", "varsize a", "varsize s",
             "hifchar", "hifnumber", "hifeof", "isfile case.run", "argnumber", "maxvars"]
WALKS = [("sprit 0", "stop"), ("tbrit + ntrees", "stop"), ("bandb", "stop"), ("forfiles *.run", "stop"),
         ("travtree up terms 0 root x", "endtrav"), ("travtree path 0 1 2 - a[1]", "endtrav"),
         ("travtree down 0 'x' y", "endtrav"), ("combine 4 2/3 a", "endcomb"), ("combine 3 * b", "endcomb"),
         ("iterrecs 0 1 s", "endrecs"), ("iterrecs 0 0 & /2 s", "endrecs"), ("iterrecs 'x' 0 \\2 + s", "endrecs"),
         ("/* none */ travtree des 0 root y", "endtrav /* none */")]
DATA = "xread 2 5 a 00 b 01 c 10 d 11 e 12 ; tread (0 (1 (2 (3 4))));\n"
OPERATORS = ["+", "-", "*", "/", "&", "|", "^", " & ", " | ", "==", "!=", "&&", "||", ">", "<",
             ">=", "<=", "=", "?"]
WORDS = ["hello", "a", "if", "else", "end", "stop", "loop", "quote", "&65", "&300", ".,", "%1", "'0'",
         '"0"', "'x'", "'(1)'", "it's", "$s", "\x01", "\xe9", "#1", "x" * 300]


class script_writer:
    def __init__(self, source):
        self.source = source
        self.loops = 0

    def pick(self, *choices):
        return self.source.choice(choices)

    def expression(self, depth=0):
        roll = self.source.randrange(14 if depth < 4 else 5)
        inner = lambda: self.expression(depth + 1)
        if roll < 3:
            return self.source.choice(NUMBERS)
        if roll == 3:
            return self.source.choice(NAMES)
        if roll == 4:
            return self.pick("#1", "#2", "#outer", "%1", "%(2)", "$s", "#(1)")
        if roll == 5:
            return "(" + inner() + ")"
        if roll == 6:
            return self.pick("!", "-", "--") + inner()
        if roll == 7:
            return "{" + " ".join(inner() for _ in range(self.source.randrange(4))) + "}"
        if roll == 8:
            return self.function(depth)
        if roll == 9:
            return self.expansion(depth)
        return inner() + self.pick("", " ") + self.source.choice(OPERATORS) + self.pick("", " ") + inner()

    def function(self, depth):
        inner = lambda: self.expression(depth + 2)
        return self.pick(
            self.source.choice(FUNCTIONS), f"combin[{inner()} {inner()}]", f"power[{inner()} {inner()}]",
            f"log[{inner()}]", f"getrandom[{inner()} {inner()}]", f"randomlist[{inner()} {inner()}]",
            f"maxval[{self.reference(depth)} {inner()}]", f"meanval[a /{inner()}]", "sortlist[a]",
            f"lenstring[{self.reference(depth)}]", f"eqstring[{self.reference(depth)} hello]",
            f"isinstring[s {self.source.choice(WORDS)}]", f"numclads[{inner()}]", f"anc[0 {inner()}]",
            f"length[{inner()}]", f"downlist[{inner()}]", f"states[{inner()} {inner()} 0]",
            f"editcost[{inner()}", "stringend[s]")

    def reference(self, depth=0):
        inner = lambda: self.expression(depth + 3)
        return self.pick("x", "y", "a", "s", f"a[{inner()}]", f"m[{inner()} {inner()}]", f"m[{inner()}]",
                         f"d[1 {inner()} 0]", "d[1 1]", "0", "100", "998", f"({inner()})",
                         f"a[{inner()}-{inner()}]", f"a[0-{inner()} &{inner()}]", "m[1,2]", "s[0]",
                         "big[0-2999]", "a[]", "a[", self.source.choice(NAMES))

    def expansion(self, depth=0):
        quote = self.pick("'", "'", '"')
        shape = self.pick("", "", "", "/5 ", "/+-8.3 ", "/.2", "/99999.99999 ", "/")
        return quote + shape + self.reference(depth) + self.pick(quote, quote, quote, "", "x")

    def string(self):
        tail = "".join(self.pick("", ">l", "<o", ":3", ":-9", ":+2", ":8499", ":9999", ":x")
                       for _ in range(2))
        return "$" + self.pick("s", "x", "100", "998", self.reference(2), "bitset " + self.expression(3),
                               "curwd", "taxon 0", "state 0 1", "dataset", "dnabitset 5", "hifstring",
                               "nosuch", "(100)") + tail

    def text(self):
        return " ".join(self.source.choice(WORDS) for _ in range(self.source.randrange(1, 12)))

    def array_work(self):
        name = self.pick("a", "b", "m", "d", "x", "s")
        other = self.pick("a", "b", "m", "d", "x", "(2)", "0", "'x'")
        operator = self.pick("+", "-", "*", "/", "&", "|", "^", "<", ">", "==", "?>", "?<=", "=", "!")
        return self.pick(f"set * {name} {other} {operator} {other};", f"set * {name} {operator}= {other};",
                         f"set * {name} *{self.expression(2)};", f"set ! {name} {other};",
                         f"set : {name} {other} /b;", f"set ) {name} {self.expression(3)} 5;",
                         f"var {self.pick('+', '|', '&', chr(92), '!')} {name} {other} out.svg;")

    def variables(self):
        count = self.expression(3)
        return self.pick("var: q;", f"var: a[{count}];", f"var = + r[{count} {count}];", "var;", "var -;",
                         f"var -{count};", f"var = {count} t u;", f"var {self.reference()};",
                         f"var /{self.reference()};", f"var ${self.reference()};",
                         f"var {self.reference()}*;", f"private {count};", f"var = {count},2,3 w;",
                         f"setarray {self.pick('3', '2,3', '2,2,2', count)} {self.reference()} "
                         + " ".join(self.expression(3) for _ in range(self.pick(3, 6, 8))) + ";")

    def files(self):
        name = self.pick("", "[case.run] ", "[nosuch] ")
        return "hifile " + self.pick("open case.run", "open nosuch", "list", f"close {name}",
                                     f"skip {name}{self.expression(3)}", f"skipline {name}2",
                                     f"seek {name}; 3", f"seek {name}&{self.expression(3)}",
                                     f"skips {name}3", f"seeks {name}quote 2", "active case.run",
                                     "=5", "foo") + ";"

    def settings(self):
        return self.pick("macfloat 3;", "macfloat 60;", "macfloat e;", "macfloat *;", "macfloat -;",
                         "macro prot 1;", "macro prot 2;", "macro +;", "macro !;", "macro [300;",
                         "macro *20 3000;", "macro;", "macro -; macro =;", "macreport =;", "macreport -;",
                         "macseed 7;", f"macseed {self.expression(3)};", "set +;", "set -;",
                         f"safe {self.pick('vars', 'loops', 'ram')} {self.expression(3)};", "resettime;",
                         "chkbreak 1;", f"progress {self.expression(3)} 10 {self.text()};", "report -;",
                         "report =;", "lquote [;")

    def statement(self, depth=0):
        roll = self.source.randrange(28)
        if roll < 6:
            return f"set {self.reference()} {self.pick('', '=', '+=', '*=', '/=', '|=', '-')} " + \
                self.expression() + ";"
        if roll < 8:
            return f"set {self.reference()} ${self.text()};"
        if roll < 11:
            return f"quote {self.expansion()} {self.string()} {self.expansion()} {self.text()};"
        if roll == 11:
            return self.array_work()
        if roll < 15:
            return self.variables()
        if roll == 15:
            return self.files()
        if roll == 16:
            return self.settings()
        if roll == 17:
            return self.pick("set x ++;", "set x--;", f"set x -{self.expression(3)};", "label here;",
                             "xend;", "end;", "else quote no; end", f"errmsg {self.text()};",
                             f"return {self.expression(2)};", "return =;", "recurse 1 2;", "goto ];",
                             "goto case.run last one two;", "goto case.run nowhere;",
                             "goto [ case.run last;", "goto = case.run;", "goto last;",
                             f"{self.string()} x;", f"rseed {self.expression(2)};")
        if roll == 18 or depth > 3:
            return self.pick("continue;", "endloop;", "stop", "killtrav;", "skipdes;", "killrecs;", "endswap;",
                             "cutbranch;", "endbranch;", "killfiles;", "copytree ntrees;", "endtrav", "proc/;")
        body = "".join(self.pick(" ", "\n") + self.statement(depth + 1)
                       for _ in range(self.source.randrange(1, 4)))
        if roll < 22:
            start = self.pick("loop 1 3", "loop 3 1", "loop 1+2 5", "loop =outer 0 2", "loop 0-1 5",
                              f"loop {self.pick('0', '1')} (({self.expression(3)}) & 3)", "loop 5+1 1")
            return start + body + self.pick(" stop", " stop", " stop ", "")
        if roll > 25:
            start, end = self.pick(*WALKS)
            return f"{start} {body} {self.pick(end, end, end, 'stop', '')} "
        ends = self.pick(" end", " end", " else if (x > 2) quote chained; end", " else quote other; end", " xend", "")
        return f"if ({self.expression()})" + body + ends


def damaged(source, text):
    for _ in range(source.randrange(1, 6)):
        at = source.randrange(len(text))
        end = min(len(text), at + source.randrange(1, 30))
        text = source.choice([text[:at] + text[end:], text[:end] + text[at:],
                              text[:at] + source.choice("'\"$%#;()[]{}-!&,. \n0") + text[at:]])
    return text


def script(source, typed):
    writer = script_writer(source)
    text = writer.pick("macro *3 50; ", *["macro *40 5000; macro [900; " + setting for setting in
                         ("", "", "macfloat -; ", "macro prot 0; ", "macro prot 1; ")])
    text += "macro =;\nvar: x y a[5] b[5] m[2 3] d[2 2 2] s[30]; set s $hello world; var: big[3000];\n"
    text += DATA * source.randrange(2)
    for _ in range(source.randrange(1, 12)):
        text += writer.statement() + "\n"
    if source.random() < 0.1:
        deep = writer.pick("(", "'a[", "$s[", "combin[", "!", "-", "{", "#(", "%(", "loop 1 2 ", "if (1) ")
        text += "set x " * source.randrange(2) + deep * writer.pick(50, 3000, 30000) + "1;\n"
    if source.random() < 0.3:
        text = damaged(source, text)
    return text + "label last; quote the end;\n"
