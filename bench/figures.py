"""What the measuring script reckons with: medians, trends, goals, and how a row reads."""
import dataclasses
import math
import operator
import statistics

RELATIONS = {'>=': (operator.ge, '≥'), '<=': (operator.le, '≤'), '<': (operator.lt, '<')}


@dataclasses.dataclass(frozen=True)
class Goal:
    relation: str  # a key of RELATIONS
    value: float

    def holds(self, figure):
        return RELATIONS[self.relation][0](figure, self.value)

    def __str__(self):
        return f'{RELATIONS[self.relation][1]} {self.value:g}'


@dataclasses.dataclass(frozen=True)
class Run:
    """What one run took. Only a process of its own has faults and a peak."""
    seconds: float
    faults: float = math.nan
    peak_bytes: float = math.nan


@dataclasses.dataclass(frozen=True)
class Result:
    """A row that was measured, or could not be because of what is missing. Its limit is the figure
    that a part of the work alone comes to."""
    key: str
    what: str
    unit: str
    goal: Goal = None
    figure: float = None
    missing: tuple = ()
    runs: dict = dataclasses.field(default_factory=dict)  # step: list of Run
    limit: float = None
    limited_by: str = ''

    @property
    def holds(self):
        """None without a goal or a figure: what was not measured is never held."""
        if self.goal is None or self.figure is None:
            return None
        return self.goal.holds(self.figure)

    @property
    def is_limited(self):
        """The goal does not hold, and the limit, which the figure does not beat, does not reach it."""
        if self.holds is not False or self.limit is None or self.goal.holds(self.limit):
            return False
        return Goal(self.goal.relation, self.figure).holds(self.limit)

    @property
    def verdict(self):
        if self.missing:
            return 'not measured, missing: ' + ', '.join(self.missing)
        if self.is_limited:
            return 'limited'
        return {True: 'holds', False: 'NOT HELD', None: ''}[self.holds]

    def as_json(self):
        goal = self.goal and dataclasses.asdict(self.goal)
        steps = {name: {'seconds': [round(run.seconds, 6) for run in runs]}
                 for name, runs in self.runs.items()}
        for name, runs in self.runs.items():
            if not math.isnan(runs[0].faults):
                steps[name]['faults'] = [run.faults for run in runs]
                steps[name]['peak_bytes'] = [run.peak_bytes for run in runs]
        return {'what': self.what, 'unit': self.unit, 'figure': self.figure, 'goal': goal,
                'holds': self.holds, 'limit': self.limit, 'limited_by': self.limited_by,
                'missing': list(self.missing), 'runs': steps}

    def __str__(self):
        figure = '-' if self.figure is None else f'{self.figure:.3g}'
        if abs(self.figure or 0) >= 1000:
            figure = f'{self.figure:.0f}'
        goal = '' if self.goal is None else str(self.goal)
        limit = ''
        if self.holds is False and self.limit is not None:
            limit = f'; at best {self.limit:.3g} by {self.limited_by}'
        line = (f'{self.key:<20} {figure:>8} {self.unit:<16} {goal:<7} {self.verdict:<9} '
                f'{self.what}{limit}')
        return line.rstrip()


def summary(results):
    goals = [result for result in results if result.goal is not None]
    held = sum(result.holds is True for result in goals)
    unmeasured = sum(result.holds is None for result in goals)
    limited = sum(result.is_limited for result in goals)
    line = f'{held} of {len(goals)} goals hold'
    line += f', {limited} are limited' if limited else ''
    return line + (f', {unmeasured} not measured' if unmeasured else '')


def median_run(runs):
    """The medians of each of what the runs took."""
    return Run(*(statistics.median(values) for values in zip(*map(dataclasses.astuple, runs))))


def slope(xs, ys):
    """How much y grows with x on the straight line that fits best."""
    return statistics.linear_regression(xs, ys).slope


def exponent(sizes, costs):
    """1 where the cost grows as the size does, 2 where it grows as its square."""
    return slope([math.log(size) for size in sizes], [math.log(cost) for cost in costs])
