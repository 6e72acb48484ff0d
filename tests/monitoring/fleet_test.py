"""Twenty exporters, one Prometheus and one Alertmanager: what breaks is told, the rest is silent."""
import http.server
import json
import re
import threading
import unittest

from engines import EXPORTER, MONITORING, EngineTest, fetch, free_ports, query, wait_for

MACHINES = 20
FAN_DIES, DISAPPEARS = 7, 12
SECONDS_TO_DEATH = 15


class Webhook:
    """Takes what the Alertmanager sends."""

    def __init__(self, test):
        self.alerts = {}
        hook = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                body = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
                for alert in body["alerts"]:
                    labels = alert["labels"]
                    hook.alerts[labels["alertname"], labels["instance"]] = alert
                self.send_response(200)
                self.end_headers()

            def log_message(self, *_):
                pass

        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        test.addCleanup(server.server_close)
        test.addCleanup(server.shutdown)
        self.url = f"http://127.0.0.1:{server.server_port}/"


class Fleet(EngineTest):
    def start_exporters(self):
        machine = {"base": "builtin", "codes": {"0x00820000..0x00820006": 3030}}
        failing = {"base": "builtin", "codes": {"0x00822005": {
            "ramp": {"from": 2750, "to": 0, "seconds": SECONDS_TO_DEATH}}}}
        files = [self.write("well.json", machine), self.write("failing.json", failing)]
        self.ports = free_ports(MACHINES)
        self.exporters = [
            self.start(EXPORTER, "--interval", "1s", "--web.listen-address", f"127.0.0.1:{port}",
                       "--simulate", files[number == FAN_DIES])
            for number, port in enumerate(self.ports)]
        self.names = [f"127.0.0.1:{port}" for port in self.ports]

    def start_prometheus(self, webhook):
        prometheus, alertmanager, cluster = free_ports(3)
        # The shipped files, with a test's patience and this test's addresses.
        rules = (MONITORING / "prometheus/kova-alerts.yml").read_text()
        self.write("kova-alerts.yml", re.sub(r"for: \d+m", "for: 5s", rules))
        scrape = (MONITORING / "prometheus/scrape.yml").read_text()
        targets = json.dumps(self.names)
        scrape = scrape.replace('["127.0.0.1:9848"]', targets).replace("30s", "1s")
        self.write("prometheus.yml", scrape.replace("127.0.0.1:9093", f"127.0.0.1:{alertmanager}"))
        self.write("alertmanager.yml", json.dumps({
            "route": {"receiver": "hook", "group_by": ["alertname", "instance"],
                      "group_wait": "1s", "group_interval": "1s"},
            "receivers": [{"name": "hook", "webhook_configs": [{"url": webhook.url}]}]}))
        self.start("prometheus-alertmanager", "--config.file=alertmanager.yml",
                   "--storage.path=alerts", f"--web.listen-address=127.0.0.1:{alertmanager}",
                   f"--cluster.listen-address=127.0.0.1:{cluster}")
        self.start("prometheus", "--config.file=prometheus.yml", "--storage.tsdb.path=data",
                   f"--web.listen-address=127.0.0.1:{prometheus}")
        self.prometheus = f"http://127.0.0.1:{prometheus}"

    def check_dashboard(self):
        dashboard = json.loads((MONITORING / "grafana/kova-machines.json").read_text())
        expressions = [target["expr"] for panel in dashboard["panels"]
                       for target in panel["targets"]]
        expressions += [note["expr"] for note in dashboard["annotations"]["list"]]
        for variable in dashboard["templating"]["list"]:
            if inner := re.match(r"label_values\((.*), \w+\)$", str(variable.get("definition"))):
                expressions.append(inner[1])
        # Nothing is out of range here, so that panel stays empty.
        may_be_empty = {text for text in expressions if text.startswith("kova_item_in_range")
                        or text.startswith("kova_item_read_success")}
        for text in expressions:
            filled = text.replace("$machine", ".*").replace("$family", ".*")
            answer = query(self.prometheus, filled)
            self.assertTrue(answer or text in may_be_empty, f"no answer: {text}")

    def test_tells_of_what_breaks_and_of_nothing_else(self):
        webhook = Webhook(self)
        self.start_exporters()
        self.start_prometheus(webhook)
        wait_for(lambda: len(query(self.prometheus, "kova_up == 1")) == MACHINES, 60,
                 "every machine is scraped")
        self.end(self.exporters[DISAPPEARS])
        wanted = {("KovaFanStopped", self.names[FAN_DIES]),
                  ("KovaExporterDown", self.names[DISAPPEARS])}
        wait_for(lambda: wanted <= set(webhook.alerts), 90, "both alerts at the webhook")
        self.check_dashboard()
        # A machine that is gone takes its items along, and is told of once.
        self.assertEqual(set(webhook.alerts), wanted)
        alert = webhook.alerts["KovaFanStopped", self.names[FAN_DIES]]
        self.assertEqual(alert["labels"]["item"], "TRK7K OB fan 3")
        self.assertIn("Replace the fan", alert["annotations"]["action"])


if __name__ == "__main__":
    unittest.main()
