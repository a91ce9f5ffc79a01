"""Kills a gateway at random moments: death_test.py COUNT FOLDER SEED

FOLDER gets the gateway's configuration and its storage folder. After each death a copy of the database
must be sound, contain every change that the gateway had confirmed, and the first so many statements of the
command that was running. The next gateway must read the same and go on from there. Exits with status 1 at the
first death after which one of these does not hold.
"""

import collections
import contextlib
import pathlib
import random
import re
import shutil
import sqlite3
import sys
import threading

import programs
import qorn_devcloud

COUNT, SEED = sys.argv[1], sys.argv[3]
FOLDER = pathlib.Path(sys.argv[2]).resolve()
CLOUD_COMMANDS = ("create-user", "refresh-access-token", "sign-in", "remove-user")
ACCOUNTS = [f"user{number}" for number in range(6)]
chance = random.Random(int(SEED))
seen = collections.Counter()  # What happened how often, printed at the end.
cloud = programs.Cloud()


def get_code(account):
    return cloud.code(account + "@x")


class Gateway(qorn_devcloud.Gateway):
    """A gateway that is killed at a random moment after arm(); ask() then returns None."""

    def __init__(self):
        super().__init__(cloud, FOLDER, keys={"account_enable_MIRLO_network_setting": "on"})
        self.timer = None

    def arm(self, most_seconds):
        if self.timer is None:
            self.timer = threading.Timer(chance.uniform(0, most_seconds), self.kill)
            self.timer.start()

    def ask(self, words):
        with contextlib.suppress(qorn_devcloud.Ended):
            return self.run(*words)

    def bury(self):
        self.timer.join()
        self.wait()
        assert self.returncode == -9, f"the gateway ended by itself with status {self.returncode}"


class State:
    """What the tables should hold. Users by their account: [UUID, ID, name, refresh token]; friends by
    UUID: the rest of the row. A UUID that the gateway has not answered yet is "?"; a token that it got
    in this life is ("code", CODE) or ("refresh", EARLIER TOKEN)."""

    def __init__(self, users=(), friends=(), interrupted=()):
        self.users = {row[1].split("@")[0]: list(row) for row in users}
        self.friends = {row[0]: row[1:] for row in friends}
        self.interrupted = set(interrupted)  # accounts of which a command was interrupted

    def account_of(self, words):
        if words[0] == "create-user":
            return words[1].split("@")[0]
        return next((user for user, row in self.users.items() if words[1:] and words[1] in row[:2]), None)

    def statements(self, words, outputs):
        """The changes that the command makes to the tables, one for each statement."""
        user = self.account_of(words)
        friends = [uuid for uuid, row in self.friends.items() if user and row[0] == self.users.get(user, [0])[0]]

        def change(column, value):
            return [lambda: self.users[user].__setitem__(column, value(self.users[user][column]))]

        def drop(uuids):
            return [lambda uuid=uuid: self.friends.pop(uuid) for uuid in uuids]

        match words:
            case ["create-user", user_id, code] if user not in self.users:
                return [lambda: self.users.update({user: [outputs.get("user_uuid", "?"), user_id, user, ("code", code)]})]
            case ["sign-in", _, code]:
                return change(3, lambda old: ("code", code))
            case ["refresh-access-token", _]:
                return change(3, lambda old: ("refresh", old))
            case ["set-user-info-by-type", _, kind, value]:
                return change(1 if kind == "200" else 2, lambda old: value)
            case ["add-friend-to-db", uuid, friend, *rest]:
                row = (uuid, friend, friend.split("@")[0], *rest)
                return [lambda: self.friends.update({outputs.get("friend_uuid", "?"): row})]
            case ["remove-friend-from-db", _, friend, _]:
                return drop(uuid for uuid in friends if self.friends[uuid][1] == friend)
            case ["remove-user", *_]:
                return [lambda: self.users.pop(user)] + drop(friends)
            case ["do-factory-reset"]:
                return [self.users.clear, self.friends.clear]
        return []

    def tables(self, tokens):
        def find(token):
            return token if isinstance(token, str) else tokens.get(find(token[1]), "none")

        users = {(*row[:3], find(row[3])) for row in self.users.values()}
        return users, {(uuid, *row) for uuid, row in self.friends.items()}

    def choose_command(self):
        user = chance.choice(ACCOUNTS)
        if user not in self.users:
            return ["create-user", user + "@x", get_code(user)]
        uuid, user_id = self.users[user][:2]
        friends = [row[1] for row in self.friends.values() if row[0] == uuid] or ["none"]
        name = f"Name{chance.randrange(10**6)}" * chance.choice((1, 900))  # one page, several pages
        friend = [f"f{chance.randrange(10**9)}@y", "guid", "device", "address", "peer"]
        commands = {("set-user-info-by-type", uuid, "200", f"{user}@{chance.choice('xyz')}"): 2,
                    ("set-user-info-by-type", uuid, "201", name): 2, ("refresh-access-token", user_id): 3,
                    ("add-friend-to-db", uuid, *friend): 14, ("remove-user", user_id, user_id): 2,
                    ("remove-friend-from-db", uuid, chance.choice(friends), "peer"): 2 * (friends != ["none"]),
                    ("do-factory-reset",): 1}
        return list(chance.choices(list(commands), list(commands.values()))[0])


def work(gateway, state, todo):
    """Runs commands until the gateway is dead; returns the one that got no answer."""
    if chance.random() < 0.1:
        gateway.arm(0.06)  # while it starts
    known = gateway.ask(["get-all-users-uuid"])
    if known is None:
        return ["start"]
    assert set(known.outputs["user_uuids"]) == {row[0] for row in state.users.values()} | {"qornsystem"}, known
    for patience in range(chance.randrange(12), -1000, -1):
        words = todo.pop(0) if todo else state.choose_command()
        several = words[0] in ("remove-user", "do-factory-reset")
        if patience < 0 or several:
            gateway.arm(0.05 if several else 0.006)
        user = state.account_of(words)
        answer = gateway.ask(words)
        if answer is None:
            return words
        if answer.code == 1:
            for change in state.statements(words, answer.outputs):
                change()
            seen[f"{words[0]} answered"] += 1
        if user in state.interrupted and words[0] in CLOUD_COMMANDS:
            if (words[0], answer.code) == ("refresh-access-token", 19):  # The cloud has given a new one.
                todo = [["sign-in", words[1], get_code(user)]]
            elif (words[0], answer.code) == ("remove-user", 16):  # The cloud's registration is gone.
                todo = [["create-user", words[1], get_code(user)], words]
            elif (words[0], answer.code) == ("create-user", 1):
                state.interrupted.remove(user)
        else:
            assert answer.code == 1, f"{words} answered {answer}"


def copy_and_look():
    """Reads users and friends from a copy of the database, which must be sound and have no empty column."""
    copy = FOLDER / "copy"
    shutil.rmtree(copy, ignore_errors=True)
    shutil.copytree(FOLDER / "data", copy)
    journal = copy / "account.db-journal"
    seen["a journal to roll back"] += journal.exists() and journal.stat().st_size > 0
    with contextlib.closing(sqlite3.connect(copy / "account.db", timeout=0)) as database:
        assert database.execute("PRAGMA integrity_check").fetchall() == [("ok",)]
        made = {name for name, in database.execute("SELECT name FROM sqlite_master WHERE type='table'")}
        users, friends = (database.execute(f"SELECT * FROM {table}").fetchall() if table in made else []
                          for table in ("Users", "Friends"))
    assert all(all(row) for row in users + friends), "an empty column"
    return [(*row[:3], row[5]) for row in users], friends


def tokens_so_far():
    """The refresh tokens that the cloud issued, by the code or refresh token that was sent for them."""
    tokens = {}
    for request in cloud.requests("/token"):
        asked = re.search(r"\b(?:code|refresh_token)=([^&]+)", request.body)
        given = re.search(rb'"refresh_token":\s*"([^"]+)', request.answer or b"")
        if given:
            tokens[asked[1]] = given[1].decode()
    return tokens


def compare(state, statements, tables, tokens):
    """Applies the statements to the state until the tables match; returns how many it took."""
    known = {row[0] for row in state.users.values()} | set(state.friends)
    found = tuple({(row[0] if row[0] in known else "?", *row[1:]) for row in rows} for rows in tables)
    for done in range(len(statements) + 1):
        if found == state.tables(tokens):
            return done
        if done < len(statements):
            statements[done]()
    raise AssertionError(f"lost or half done\nfound {found}\nexpected at most {state.tables(tokens)}")


def die_once(state, todo):
    if chance.random() < 0.05:  # A new folder: the tables are made again.
        shutil.rmtree(FOLDER / "data")
        (FOLDER / "data").mkdir()
        state, todo = State(), []
    cloud.forget_requests()
    with Gateway() as gateway:
        words = work(gateway, state, todo)
        gateway.bury()
    tables = copy_and_look()
    user = state.account_of(words)
    statements = state.statements(words, {})
    done = compare(state, statements, tables, tokens_so_far())
    seen[f"{words[0]} interrupted after {done} of {len(statements)} statements"] += 1
    state = State(*tables, state.interrupted | ({user} if words[0] in CLOUD_COMMANDS else set()))
    again = words[0] in ("remove-user", "refresh-access-token") and user in state.users
    return state, [words] if again else []


state, todo = State(), []
with cloud:
    for moment in range(int(COUNT)):
        try:
            state, todo = die_once(state, todo)
        except Exception:
            print(f"death_test.py: moment {moment} of seed {SEED}; its folder stays: {FOLDER}", file=sys.stderr)
            raise
for what, number in sorted(seen.items()):
    print(f"{number:6} {what}")
print(f"{COUNT} deaths, seed {SEED}: nothing answered was lost, nothing half done")
