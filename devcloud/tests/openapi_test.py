"""Walks the description of the control API that the cloud serves: each operation, example, status and field."""

import collections
import json
import re
import urllib.parse

import jsonschema
import programs
from qorn_devcloud.wire import Connection, send

JSON = "application/json"


def is_closed(schema):
    """Whether an answer may have the members that the schema names and no others, and must have all of them."""
    return schema["additionalProperties"] is False and set(schema.get("required", ())) == set(schema["properties"])


class OpenApi(programs.TestCase):
    def setUp(self):
        super().setUp()
        self.cloud = self.enterContext(programs.Cloud())
        self.document = self.plain(self.cloud.ask("/api/openapi.json"))
        self.resolver = jsonschema.RefResolver.from_schema(self.document)

    def plain(self, node):
        """The description with JSON Schema's own word for "nullable"."""
        if isinstance(node, list):
            return [self.plain(item) for item in node]
        if not isinstance(node, dict):
            return node
        node = {name: self.plain(item) for name, item in node.items()}
        if node.pop("nullable", False):
            node["type"] = [node["type"], "null"]
        return node

    def find(self, node):
        return self.resolver.resolve(node["$ref"])[1] if "$ref" in node else node

    def errors(self, value, schema):
        return [error.message for error in jsonschema.Draft4Validator(schema, self.resolver).iter_errors(value)]

    def leaves(self, schema):
        """The schemas with members that a schema consists of."""
        schema = self.find(schema)
        parts = schema.get("oneOf", []) + schema.get("allOf", []) + [schema[key] for key in ("items",) if key in schema]
        nested = [leaf for part in parts + list(schema.get("properties", {}).values()) for leaf in self.leaves(part)]
        return nested + [schema] * ("properties" in schema)

    def set_the_scene(self):
        """A user with each kind of token on a device, a fault, and a request without an answer."""
        self.cloud.ask("/api/reset", {})
        http = self.cloud.urls["http"]
        form = "client_id=a&client_secret=b&grant_type=authorization_code&code=" + self.cloud.code("ann@x")
        tokens = json.loads(send("POST", http + "/token", form).text.partition("\r\n\r\n")[2])
        send("POST", http + "/device/adduserdevice", f"<dpxDevice><userID>{tokens['userId']}</userID>"
             "<devicePhysicalAddressText>AABB</devicePhysicalAddressText></dpxDevice>",
             [f"X-DPX-userid: {tokens['userId']}", f"Authorization: OAuth oauth_token={tokens['access_token']}"])
        self.cloud.code("ann@x")
        self.cloud.ask("/api/faults", {"kind": "stall", "times": -1})
        self.enterContext(Connection(http)).write("GET /authorize HTTP/1.1\r\n\r\n")
        programs.wait_until(lambda: len(self.cloud.ask("/api/requests")) == 3)

    def calls(self, operation):
        """What to send, by place and name, with the status that comes."""
        body = operation.get("requestBody", {})
        parameters = [self.find(parameter) for parameter in operation["parameters"]]
        sources = [((source["in"], source["name"]), source) for source in parameters]
        sources.append((("body", ""), {**body, **body.get("content", {}).get(JSON, {})}))
        named = collections.defaultdict(dict)
        if not any(source.get("required") for _, source in sources):
            named["200"] = {}
        for place, source in sources:
            for name, example in source.get("examples", {}).items():
                self.assertEqual(self.errors(example["value"], source["schema"]), [], (place, name))
                named[name][place] = example["value"]
        yield from ((name[:3], values) for name, values in named.items())
        for place, source in sources:
            for value in source.get("x-refused", ()):
                self.assertTrue(self.errors(value, source["schema"]), f"the schema allows {value}")
                yield "400", {place: value}

    def send(self, method, path, values, is_stream):
        query = {name: value for (place, name), value in values.items() if place == "query"}
        lines = [f"{name}: {value}" for (place, name), value in values.items() if place == "header"]
        body = json.dumps(values["body", ""]) if ("body", "") in values else ""
        url = self.cloud.urls["api"] + path + ("?" + urllib.parse.urlencode(query)) * bool(query)
        if not is_stream:
            return send(method, url, body, lines).text
        connection = self.enterContext(Connection(self.cloud.urls["api"]))
        connection.write(f"GET {path} HTTP/1.1\r\nHost: {self.cloud.urls['api'][7:]}\r\n\r\n")
        return "".join(map(connection.read_until, ("event: requests\n", "\n\n")))

    def value_of(self, content_type, text):
        if content_type == "text/event-stream":
            events = re.findall("event: (.*)\ndata: (.*)\n\n", text)
            return [{"event": name, "data": json.loads(data)} for name, data in events]
        return json.loads(text) if content_type == JSON else text

    def walk(self, method, path, operation):
        """Makes every call of the operation; returns the statuses that came."""
        seen = set()
        for status, values in self.calls(operation):
            with self.subTest(f"{method} {path}", status=status, values=values):
                self.set_the_scene()
                answer = self.find(operation["responses"][status])
                head, _, text = self.send(method, path, values, "text/event-stream" in answer["content"]).partition(
                    "\r\n\r\n")
                self.assertEqual(head.split()[1], status, text)
                content_type = re.search("\r\nContent-Type: (.*)", head)[1].strip()
                schema = answer["content"][content_type]["schema"]
                self.assertEqual(self.errors(self.value_of(content_type, text), schema), [])
                self.assertTrue(all(map(is_closed, self.leaves(schema))) or "allOf" in self.find(schema), schema)
                seen.add(status)
        return seen

    def test_describes_what_the_cloud_answers(self):
        described = set()
        for path, item in self.document["paths"].items():
            for method, operation in item.items():
                described.add(f"{method.upper()} {path}")
                self.assertEqual(self.walk(method.upper(), path, operation), set(operation["responses"]), path)
        self.assertEqual(described, set(self.cloud.ask("/api/routes")))

    def test_examples_have_every_member_that_a_body_may_have(self):
        for path, item in self.document["paths"].items():
            media = item.get("post", {}).get("requestBody", {}).get("content", {}).get(JSON, {"schema": {}})
            members = [entry for leaf in self.leaves(media["schema"]) for entry in leaf["properties"].items()]
            given = [example["value"] for example in media.get("examples", {}).values()]
            for name, schema in members:
                values = [value[name] for value in given if name in value]
                self.assertTrue(values, f"{path} {name}")
                self.assertEqual([value for value in self.find(schema).get("enum", ()) if value not in values], [])
