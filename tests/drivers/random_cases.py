"""Random data of all kinds, settings and searches, as commands, with what the oracle knows of the data."""

from parsimony import Character, ImpliedWeights

SYMBOLS = "0123456789"


def state_text(states):
    if not states:
        return "?"
    return SYMBOLS[min(states)] if len(states) == 1 else "[" + "".join(SYMBOLS[s] for s in sorted(states)) + "]"


def grown_states(rnd, taxa, states, noise):
    """States that mostly follow the order of the taxa, so that trees matter."""
    size = rnd.randint(2, max(2, taxa // 2))
    shift = rnd.randrange(taxa)
    return [rnd.randrange(states) if rnd.random() < noise else (t + shift) % taxa // size % states for t in range(taxa)]


class Case:
    def __init__(self, rnd, most_taxa=22):
        self.rnd = rnd
        self.taxa = rnd.randint(*((5, 9) if rnd.random() < 0.25 else (10, most_taxa)))
        self.implied = None
        self.characters = []
        continuous = rnd.choice((0, 0, 0, 1, 2))
        self.noise = rnd.choice((0.1, 0.3, 0.6, 1))
        missing, polymorphic = rnd.choice((0, 0.1, 0.4)), rnd.choice((0, 0, 0.15))
        for _ in range(continuous):
            self.characters.append(self.continuous(missing))
        kinds = rnd.choice((["plain"], ["plain", "additive"], ["plain", "additive", "costs"], ["plain"] * 6 + ["costs"]))
        for _ in range(rnd.randint(4, 36)):
            self.characters.append(self.discrete(rnd.choice(kinds), missing, polymorphic))
        for c in self.characters:
            c.weight = 1 if rnd.random() < 0.7 else rnd.choice((2, 3, 5, 1000))
            c.active = rnd.random() > 0.05
        if not any(c.active for c in self.characters):
            self.characters[0].active = True
        self.inactive = [t for t in range(1, self.taxa) if rnd.random() < 0.1] if rnd.random() < 0.2 else []
        self.inactive = self.inactive[:max(0, self.taxa - 5)]
        if rnd.random() < 0.35:
            self.weigh_by_homoplasy()
        self.force = ""
        if rnd.random() < 0.25:
            self.constrain()
        self.is_fractional = self.implied is not None or continuous > 0

    def continuous(self, missing):
        rnd = self.rnd
        cells = []
        for state in grown_states(rnd, self.taxa, 8, self.noise):
            low = 1000 * state + rnd.randrange(900)
            high = low + (rnd.randrange(1500) if rnd.random() < 0.3 else 0)
            cells.append(set() if rnd.random() < missing else {low, high})
        return Character(cells, "continuous")

    def discrete(self, kind, missing, polymorphic):
        rnd = self.rnd
        states = rnd.choice((2, 2, 3, 4, 6))
        cells = []
        for state in grown_states(rnd, self.taxa, states, self.noise):
            cell = {state} | ({rnd.randrange(states)} if rnd.random() < polymorphic else set())
            cells.append(set() if rnd.random() < missing else cell)
        return Character(cells, kind, self.costs(states) if kind == "costs" else None)

    def costs(self, states):
        rnd = self.rnd
        symmetric, most = rnd.random() < 0.6, rnd.choice((2, 4, 9))
        table = [[0 if a == b else rnd.randint(1, most) for b in range(states)] for a in range(states)]
        if symmetric:
            table = [[table[min(a, b)][max(a, b)] for b in range(states)] for a in range(states)]
        for _ in range(states if rnd.random() < 0.6 else 0):  # no detour is cheaper
            table = [[min(table[a][k] + table[k][b] for k in range(states)) for b in range(states)] for a in range(states)]
        return table

    def weigh_by_homoplasy(self):
        rnd = self.rnd
        self.implied = ImpliedWeights(rnd.choice((0.5, 1, 3, 12, 50)))
        for c in self.characters:
            c.internal = rnd.choice((0, 0, 0, 0, 0, 2))
        if rnd.random() < 0.6:
            return
        for c in self.characters:
            draw = rnd.random()
            if draw < 0.2:
                c.set = rnd.randrange(2)
            elif draw < 0.3:
                c.constant = True
            elif draw < 0.5:
                c.own_k = rnd.choice((0.5, 2, 20))

    def constrain(self):
        rnd = self.rnd
        group = rnd.sample(range(1, self.taxa), min(self.taxa - 2, rnd.randint(2, 5)))
        if len([t for t in group if t not in self.inactive]) < 2:
            return
        names = " ".join(map(str, group))
        if rnd.random() < 0.3:
            floating = next(t for t in range(1, self.taxa) if t not in group)
            names += f" ({floating})"
        others = " ".join(str(t) for t in range(self.taxa) if t not in group)
        text = f"= ({others} ({names}))" if rnd.random() < 0.4 and "(" not in names else f"{rnd.choice('+++-')}[{names}]"
        self.force = f"force {text}; constrain =;\n"

    def active_taxa(self):
        return [t for t in range(self.taxa) if t not in self.inactive]

    def matrix(self):
        """The data as commands."""
        continuous = [c for c in self.characters if c.kind == "continuous"]
        others = [c for c in self.characters if c.kind != "continuous"]
        text = "report-; mxram 200;\n" + ("piwe=;\n" if self.implied else "")
        text += f"nstates {'32' if continuous else 'num 10'};\nxread {len(self.characters)} {self.taxa}\n"
        if continuous:
            text += "&[cont]\n"
            for t in range(self.taxa):
                cells = [c.cells[t] for c in continuous]
                text += f"t{t} " + " ".join(f"{min(x) / 1000:.3f}-{max(x) / 1000:.3f}" if x else "?" for x in cells) + "\n"
            text += "&[num]\n"
        text += "".join(f"t{t} " + "".join(state_text(c.cells[t]) for c in others) + "\n" for t in range(self.taxa)) + ";\n"
        for i, c in enumerate(self.characters):
            if c.costs:
                text += f"costs {i} = " + " ".join(f"{a}>{b} {x}" for a, row in enumerate(c.costs) for b, x in enumerate(row) if a != b) + ";\n"
            text += f"ccode {'+ ' if c.kind == 'additive' else ''}{'' if c.active else '] '}/{c.weight} ={c.internal} {i};\n"
        if self.inactive:
            text += "taxcode -" + " ".join(map(str, self.inactive)) + ";\n"
        return text + self.weighting() + self.force

    def weighting(self):
        if not self.implied:
            return ""
        text = f"piwe={self.implied.k};\n"
        for number in (0, 1):
            members = [str(i) for i, c in enumerate(self.characters) if c.set == number]
            text += f"xpiwe[ {' '.join(members)};\n" if members else ""
        constant = [str(i) for i, c in enumerate(self.characters) if c.constant]
        text += f"xpiwe/0x1 {' '.join(constant)};\n" if constant else ""
        own = [f"{i}/{c.own_k}" for i, c in enumerate(self.characters) if c.own_k]
        return text + (f"xpiwe( {' '.join(own)};\n" if own else "")

    def settings(self):
        """Of searches."""
        rnd = self.rnd
        text = f"hold {rnd.choice((8, 20, 100))}; rseed {rnd.randint(1, 9999)};"
        for command, share in (("rseed:7;", 0.1), ("rseed[;", 0.1), ("rseed>;", 0.1), ("bbreak:nomulpars;", 0.15), ("bbreak:spr;", 0.1),
                               (f"subopt {rnd.choice((0.5, 1, 3))};", 0.12), (f"subopt {rnd.choice((1, 3))}x0.2;", 0.05),
                               ("collapse 1;", 0.15), ("collapse 3;", 0.1), ("collapse 4;", 0.1), ("bbreak:randclip;", 0.1)):
            text += " " + command if rnd.random() < share else ""
        return text + "\n"

    def start(self):
        """Trees to start from."""
        return self.rnd.choice((f"randtrees {self.rnd.randint(1, 6)};", "mult=wagner replications 4 keepall; mult:tbr nokeepall;",
                                "mult=spr replications 3 hold 2 keepall; mult:tbr nokeepall hold 10;"))


def cycles(rnd):
    words = f"iterations {rnd.randint(0, 9)} numsubs {rnd.choice((0, 3, 40))} giveup {rnd.choice((0, 20, 99))}"
    for word in ("noequals", f"autoconst {rnd.randint(1, 4)}", f"fusefreq 3x{rnd.randint(1, 4)}", "fusefreq 4", "nodumpfuse"):
        words += " " + word if rnd.random() < 0.2 else ""
    return words


def ratchet(rnd):
    words = cycles(rnd) + f" upfactor {rnd.choice((0, 4, 40))} downfactor {rnd.choice((4, 40, 100))}"
    return words + rnd.choice(("", "", " auto", " tradrat"))


def drift(rnd):
    words = cycles(rnd) + f" fitdiff {rnd.choice((0.5, 1, 4))} rfitdiff {rnd.choice((0.1, 0.5, 1))} xfactor {rnd.choice((0, 3, 50))}"
    return words + rnd.choice(("", "", " nopert", f" flat {rnd.randint(1, 3)} rflat 0.9 flatnumsubs 20"))


def sectsch(rnd):
    selection = rnd.choice((f"rss minsize {rnd.randint(5, 8)} maxsize {rnd.randint(8, 30)} increase {rnd.choice((0, 50, 100))}"
                            f" selfactor {rnd.choice(('1', '20', '= 3 9'))}", f"xss {rnd.randint(2, 4)}-{rnd.randint(2, 6)}+{rnd.randint(1, 3)}-{rnd.randint(1, 2)}",
                            f"css minfork {rnd.randint(2, 5)} rounds 1", f"dss {rnd.randint(0, 12)} {rnd.randint(1, 4)} tree 0"))
    words = f"{selection} starts {rnd.randint(1, 4)} drift {rnd.randint(0, 4)} combstarts {rnd.randint(1, 4)}"
    for word in ("xeven", "chkroot", "moveon 2", "godrift 5", "gocomb 6", "equals", "fuse 2", "global 1 dglobal 1", "noglobal", "nokeepall"):
        words += " " + word if rnd.random() < 0.25 else ""
    return words


def tfuse(rnd):
    words = f"rounds {rnd.randint(1, 6)} minfork {rnd.choice((0, 3, 4))}"
    words += f" hybridize {rnd.randint(1, 6)}*{rnd.randint(1, 2)}/3" if rnd.random() < 0.1 else ""
    for word in ("equals", "nobeststart", "choose", "repeat", "noswap", "nokeepall", f"xroot {rnd.randint(1, 3)}"):
        words += " " + word if rnd.random() < 0.25 else ""
    return words


def mult(rnd):
    words = f"replications {rnd.randint(1, 5)} hold {rnd.choice((0, 1, 3, 10))} {rnd.choice(('wagner', 'spr', 'tbr'))}"
    for word in ("ratchet", "drift", "keepall", "cas 3", "fas 3", "ias", "sas"):
        words += " " + word if rnd.random() < 0.3 else ""
    return words


def xmult(rnd):
    words = f"hits {rnd.randint(1, 3)} replications {rnd.randint(1, 4)}" if rnd.random() < 0.7 else f"level {rnd.choice((0, 1.5, 3, 4))}"
    for word in ("norss", "xss", "nofuse", "fuse 3", "gfuse 2", "nodrift", "drift 2", "ratchet 3", "keepall", "nomultiply", "noupdate", "hold 3",
                 "autoconst 3", "noautoconst", "noxmix", "prvmix", "retouch 1", "consense 2 conbase 1",
                 "chklevel +0.5 2", "css", "nocss", "rebuild 3", "hfuse 5", "hybrid x1.5", "picktype 1"):
        words += " " + word if rnd.random() < 0.2 else ""
    return words


def hybrid(rnd):
    words = f"hybridize {rnd.randint(1, 9)}*{rnd.randint(1, 3)}/{rnd.choice((0, 2, 5))}"
    for word in ("noautostop", "autostop 1", "noreplace", "clog 1", "noclog"):
        words += " " + word if rnd.random() < 0.2 else ""
    return words


def rebuild(rnd):
    clips = rnd.choice(("", "clip 1-4", "clip 2", f"pclip {rnd.choice((1, 20, 50))}"))
    words = f"cycles {rnd.randint(0, 6)} {clips} {rnd.choice(('size 1', 'size 3', 'size 0 psize 30', 'size 9'))} sample {rnd.randint(2, 5)}"
    for word in (f"reset {rnd.randint(1, 3)}+1", "nohybrid", "hybrid 1", "noancfirst", "keepall", "nodump"):
        words += " " + word if rnd.random() < 0.3 else ""
    return words


DRIVERS = {"hybrid": hybrid, "rebuild": rebuild, "mult": mult, "ratchet": ratchet, "drift": drift, "sectsch": sectsch, "tfuse": tfuse, "xmult": xmult}
