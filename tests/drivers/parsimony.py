"""Slow, obvious parsimony over trees that are nested tuples of terminals: an oracle for the searches."""

import itertools

FORBIDDEN = 10**9


class Character:
    """Cells by terminal: a set of states, empty for missing; `change(a, b)` costs, ancestor first.
    A continuous one has ranges in thousandths, given by their two ends."""

    def __init__(self, cells, kind="plain", costs=None):
        self.cells, self.kind, self.costs = cells, kind, costs
        self.weight, self.active, self.internal = 1, True, 0
        self.own_k, self.set, self.constant = None, None, False
        if costs and is_path_length(costs):
            self.cells = [self.with_states_between(cell) for cell in cells]

    def with_states_between(self, cell):
        """In a tree of states a polymorphic cell is a part of that tree."""
        d = self.costs
        return {t for t in range(len(d)) if any(d[s][t] + d[t][u] == d[s][u] for s in cell for u in cell)}

    def change(self, a, b):
        return self.costs[a][b] if self.costs else abs(a - b) if self.is_ordered() else int(a != b)

    def is_ordered(self):
        return self.kind in ("additive", "continuous")

    def unit(self):
        return 1000 if self.kind == "continuous" else 1

    def states_of(self, terminal, values):
        """Which of the values the terminal can have; in ordered characters all between the ends."""
        cell = self.cells[terminal]
        if not cell:
            return values
        return [v for v in values if min(cell) <= v <= max(cell)] if self.is_ordered() else [v for v in values if v in cell]

    def values(self, taxa):
        """Those that some reconstruction of least cost is made of; under costs all of the table."""
        return list(range(len(self.costs))) if self.costs else sorted(set().union(*(self.cells[t] for t in taxa)))

    def steps(self, tree):
        values = self.values(terminals(tree))
        return min(self.below(tree, values).values()) if values else 0

    def below(self, tree, values):
        if isinstance(tree, int):
            own = self.states_of(tree, values)
            return {v: 0 if v in own else FORBIDDEN for v in values}
        parts = [self.below(part, values) for part in tree]
        return {a: sum(min(self.change(a, b) + cost for b, cost in part.items()) for part in parts) for a in values}

    def least_steps(self, taxa):
        """On any tree; None where costs make that hard to know."""
        known = [self.cells[t] for t in taxa if self.cells[t]]
        if not known or self.costs:
            return None if self.costs else 0
        if self.is_ordered():
            return max(0, max(map(min, known)) - min(map(max, known)))
        states = set().union(*known)
        return next(n for n in range(len(states) + 1)
                    if any(all(cell & set(some) for cell in known) for some in itertools.combinations(states, n))) - 1


def is_path_length(costs):
    """Are these the lengths of paths in a tree of states, whose edges are 1 long?"""
    n = len(costs)
    paths = [[0 if a == b else 1 if costs[a][b] == 1 else 10**6 for b in range(n)] for a in range(n)]
    edges = sum(paths[a][b] == 1 for a in range(n) for b in range(a))
    for k, a, b in itertools.product(range(n), repeat=3):
        paths[a][b] = min(paths[a][b], paths[a][k] + paths[k][b])
    return edges == n - 1 and paths == costs


def terminals(tree):
    return [tree] if isinstance(tree, int) else [t for part in tree for t in terminals(part)]


def parsed(text):
    """The tree of a parenthetical text of numbers."""
    stack = [[]]
    for word in text.replace("(", " ( ").replace(")", " ) ").split():
        if word == "(":
            stack.append([])
        elif word == ")":
            part = tuple(stack.pop())
            stack[-1].append(part)
        else:
            stack[-1].append(int(word))
    return stack[0][0]


def length(characters, tree):
    return sum(c.weight * c.steps(tree) / c.unit() for c in characters if c.active)


class ImpliedWeights:
    def __init__(self, k):
        self.k = k
        self.constant_steps, self.constant_factor = 0, 1.0

    def score(self, characters, tree, least):
        """`least` steps by character."""
        sets, total = {}, 0
        for c, base in zip(characters, least):
            if not c.active or c.weight == 0:
                continue
            h = max(0, c.steps(tree) - base) / c.unit() + c.internal
            if c.set is not None:
                sets.setdefault(c.set, []).append((c, h))
            elif c.constant:
                n = self.constant_steps
                total += c.weight * h * self.constant_factor * (self.cost(self.k, n + 1) - self.cost(self.k, n))
            else:
                total += c.weight * self.cost(c.own_k or self.k, h)
        for members in sets.values():
            k = next((c.own_k for c, _ in members if c.own_k), self.k)
            total += len(members) * self.cost(k, sum(c.weight * h for c, h in members) / len(members))
        return total

    @staticmethod
    def cost(k, h):
        return h / (k + h)
