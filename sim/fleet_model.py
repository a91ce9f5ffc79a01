"""A model of many gateways that fetch their network setting from one portal.

A gateway tries when its account component starts, and every 60 seconds until both of its requests were
answered in one try. Each request has a connection of its own. Connecting may take five seconds, in which
the kernel repeats its SYN; once it is connected, a gateway waits for its answer without a limit.

The portal answers so many requests a second, first in, first out, and holds so many connections. While it
is full its kernel drops SYNs. In the moment when there is room it answers each SYN, since the handshakes
that would fill it again are still under way: gateways that lose this race are connected as far as their
kernels know, which repeat what they have sent until there is room. Over HTTPS the five seconds go on until
the portal has answered that; over HTTP such a gateway waits without a limit as well.

Time goes in steps; what competes within a step does so in random order.
"""

import collections
import dataclasses

import numpy

PERIOD = 60.0
CONNECT_SECONDS = 5.0
# When a kernel repeats a request that nobody acknowledges, each time since the one before. The last time is
# too late: the portal's kernel knows a handshake for two minutes, and then resets the connection.
REQUEST_REPEATS = tuple(0.2 * 2 ** number for number in range(10))


@dataclasses.dataclass(frozen=True)
class Settings:
    gateways: int = 200
    requests_per_second: float = 0  # 0: no limit, here and below
    connections: int = 0
    scheme: str = "https"  # or "http"
    kernel_queue: int = 2  # connections that the portal's kernel completes beyond those
    boot: str = "normal:60:5"  # when components start: a distribution in seconds
    start_spread: int = 0  # the gateways wait 0 to so many whole seconds more
    outage: float = 0  # the portal is away for the first seconds
    outage_kind: str = "silent"  # or "refused": whether its address drops SYNs or refuses them
    syn_repeats: tuple = (1.0, 3.0)  # when the gateway's kernel repeats a SYN, in seconds since the first
    handshake: float = 0.03  # from a SYN to the ACK that ends the handshake, at the portal
    turnaround: float = 0.03  # from the first answer to the second connection's SYN
    duration: float = 3600
    step: float = 0.01
    seed: int = 1


@dataclasses.dataclass
class Result:
    settings: Settings
    begin: float  # when a gateway could first be served
    served: numpy.ndarray  # when each gateway was served, in seconds since the begin; NaN: not at all
    tries: numpy.ndarray  # by gateway
    connects: numpy.ndarray  # connection attempts in each second
    answers: numpy.ndarray  # requests answered in each second
    most_connections: int


def draw_starts(settings, random):
    """Seconds at which the components start, drawn from the boot times and the start spread."""
    name, *numbers = settings.boot.split(":")
    draw = {"uniform": random.uniform, "normal": random.normal,
            "constant": lambda at, size: numpy.full(size, at)}[name]
    starts = numpy.maximum(draw(*map(float, numbers), size=settings.gateways), 0)
    if settings.start_spread:
        starts += random.integers(0, settings.start_spread, settings.gateways, endpoint=True)
    return starts


def simulate(settings, starts=None):
    """Simulates gateways whose components start at these times, by default at times that are drawn."""
    random = numpy.random.default_rng(settings.seed)
    if starts is None:
        starts = draw_starts(settings, random)
    return Fleet(settings, numpy.asarray(starts, dtype=float), random).run()


class Portal:
    """The queue of connections whose request was not answered yet."""

    def __init__(self, settings):
        self.room = settings.connections + settings.kernel_queue if settings.connections else settings.gateways
        self.room = min(self.room, settings.gateways)
        self.interval = 1 / settings.requests_per_second if settings.requests_per_second else 0
        self.next = 0.0  # the earliest time of the next answer
        self.ring = numpy.empty(self.room, dtype=numpy.int32)
        self.head = self.waiting = self.most = 0

    def connect(self, gateways):
        places = (self.head + self.waiting + numpy.arange(gateways.size)) % self.room
        self.ring[places] = gateways
        self.waiting += gateways.size
        self.most = max(self.most, self.waiting)

    def answer(self, begin, end):
        """The gateways that are answered between these times."""
        count = self.waiting
        if self.interval and count:
            self.next = max(self.next, begin)
            count = min(count, max(0, int(numpy.ceil((end - self.next) / self.interval))))
            self.next += count * self.interval
        answered = self.ring[(self.head + numpy.arange(count)) % self.room]
        self.head = (self.head + count) % self.room
        self.waiting -= count
        return answered


class Calendar:
    """Which gateways have something to do in a step."""

    def __init__(self):
        self.entries = collections.defaultdict(list)

    def add(self, step, gateways):
        if gateways.size:
            self.entries[step].append(gateways)

    def add_each(self, steps, gateways):
        """Each gateway in a step of its own."""
        order = numpy.argsort(steps, kind="stable")
        steps, gateways = steps[order], gateways[order]
        cuts = numpy.flatnonzero(numpy.diff(steps)) + 1
        for at, group in zip(steps[numpy.concatenate(([0], cuts))] if steps.size else (),
                             numpy.split(gateways, cuts)):
            self.add(int(at), group)

    def take(self, step):
        found = self.entries.pop(step, ())
        if not found:
            return EMPTY
        return found[0] if len(found) == 1 else numpy.concatenate(found)


EMPTY = numpy.empty(0, dtype=numpy.int32)


class Repeats:
    """What is sent again after each of these pauses, in steps; after the last pause it is given up."""

    def __init__(self, pauses):
        self.pauses = pauses
        self.at = [Calendar() for _ in range(len(pauses) + 1)]

    def take(self, step):
        """Who sends it in this step, by how often it was sent before."""
        return [calendar.take(step) for calendar in self.at[:-1]]

    def repeat(self, step, number, gateways):
        self.at[number + 1].add(step + int(self.pauses[number]), gateways)


class Fleet:
    def __init__(self, settings, starts, random):
        self.settings, self.random, self.portal = settings, random, Portal(settings)
        self.period, self.patience = self.steps(PERIOD), self.steps(CONNECT_SECONDS)
        self.turnaround = self.steps(settings.turnaround)
        self.outage_end = self.steps(settings.outage)
        moments = [0, *(self.steps(at) for at in settings.syn_repeats if at < CONNECT_SECONDS), self.patience]
        self.syns = Repeats(numpy.diff(moments))
        self.acks = Repeats([self.steps(pause) for pause in REQUEST_REPEATS])
        self.timeouts = Calendar()
        self.handshake = max(1, self.steps(settings.handshake))
        self.tries_at = Calendar()
        self.started = numpy.rint(starts / settings.step).astype(numpy.int64)
        self.begin = max(int(self.started.min()), self.outage_end)
        self.last = self.begin + self.steps(settings.duration)
        self.tries_at.add_each(self.started, numpy.arange(starts.size, dtype=numpy.int32))
        self.tries = numpy.zeros(starts.size, dtype=numpy.int32)
        self.try_begin = numpy.zeros(starts.size, dtype=numpy.int64)
        self.connect_begin = numpy.zeros(starts.size, dtype=numpy.int64)
        self.has_first = numpy.zeros(starts.size, dtype=bool)  # the first request of this try is answered
        self.served = numpy.full(starts.size, numpy.nan)
        self.left = starts.size
        self.connects = collections.Counter()
        self.answers = collections.Counter()

    def steps(self, seconds):
        return int(round(seconds / self.settings.step))

    def run(self):
        calendars = (self.tries_at, self.timeouts, *self.syns.at, *self.acks.at)
        for step in range(int(self.started.min()), self.last):
            if self.portal.waiting or any(step in calendar.entries for calendar in calendars):
                self.run_step(step)
                if not self.left:
                    break
        seconds = int(numpy.ceil((step + 1) * self.settings.step))
        series = (numpy.array([counts[second] for second in range(seconds)], dtype=int)
                  for counts in (self.connects, self.answers))
        return Result(self.settings, self.begin * self.settings.step, self.served, self.tries, *series,
                      self.portal.most)

    def run_step(self, step):
        self.answer(step)
        self.give_up(step, self.timeouts.take(step))
        for repeats in (self.syns, self.acks):
            self.give_up(step, repeats.at[-1].take(step))
        begun = self.tries_at.take(step)
        self.tries[begun] += 1
        self.try_begin[begun] = step
        self.has_first[begun] = False
        self.connect(step, begun)
        self.handle_acks(step)
        self.handle_syns(step)

    def connect(self, step, gateways):
        self.connects[int(step * self.settings.step)] += gateways.size
        self.connect_begin[gateways] = step
        self.syns.at[0].add(step, gateways)

    def answer(self, step):
        answered = self.portal.answer(step * self.settings.step, (step + 1) * self.settings.step)
        if not answered.size:
            return
        self.answers[int(step * self.settings.step)] += answered.size
        whole = self.has_first[answered]
        done, half = answered[whole], answered[~whole]
        self.served[done] = (step + 1 - self.begin) * self.settings.step
        self.left -= done.size
        self.has_first[half] = True
        self.connect(step + self.turnaround, half)

    def give_up(self, step, gateways):
        """The try has failed. The timer runs since the end of the first try, and then every 60 seconds."""
        if not gateways.size:
            return
        timer = numpy.where(self.tries[gateways] == 1, step, self.try_begin[gateways]) + self.period
        self.tries_at.add_each(numpy.maximum(timer, step + 1), gateways)

    def handle_acks(self, step):
        """Handshakes that end, and connected gateways that repeat their request: as many as there is room for."""
        arrivals = self.acks.take(step)
        total = sum(gateways.size for gateways in arrivals)
        if not total:
            return
        room = self.portal.room - self.portal.waiting
        is_in = numpy.ones(total, dtype=bool)
        if room < total:
            is_in[self.random.permutation(total)[room:]] = False
        position = 0
        for number, gateways in enumerate(arrivals):
            lucky = is_in[position:position + gateways.size]
            position += gateways.size
            self.portal.connect(gateways[lucky])
            self.repeat_request(step, number, gateways[~lucky])

    def repeat_request(self, step, number, gateways):
        if self.settings.scheme == "https" and gateways.size:
            timeouts = self.connect_begin[gateways] + self.patience
            is_late = step + self.acks.pauses[number] >= timeouts
            self.timeouts.add_each(numpy.maximum(timeouts[is_late], step + 1), gateways[is_late])
            gateways = gateways[~is_late]
        self.acks.repeat(step, number, gateways)

    def handle_syns(self, step):
        for number, gateways in enumerate(self.syns.take(step)):
            if step < self.outage_end and self.settings.outage_kind == "refused":
                self.give_up(step, gateways)
            elif step < self.outage_end or self.portal.waiting == self.portal.room:
                self.syns.repeat(step, number, gateways)
            else:
                self.acks.at[0].add(step + self.handshake, gateways)
