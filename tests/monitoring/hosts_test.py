"""The other roads out of a machine: a real Nagios runs the check, a real broker takes SenML."""
import json
import os
import subprocess
import unittest

from engines import KOVACTL, MONITORING, EngineTest, free_ports, wait_for

NAGIOS = """\
log_file={0}/nagios.log
cfg_file={0}/objects.cfg
object_cache_file={0}/objects.cache
status_file={0}/status.dat
status_update_interval=1
temp_file={0}/nagios.tmp
temp_path={0}
check_result_path={0}
lock_file={0}/nagios.lock
command_file={0}/nagios.cmd
state_retention_file={0}/retention.dat
query_socket={0}/nagios.qh
nagios_user={1}
nagios_group={1}
interval_length=1
execute_service_checks=1
check_for_updates=0
service_inter_check_delay_method=n
"""

# What a Nagios configuration has anyway: a contact, a period, a host.
OBJECTS = """\
define timeperiod {
 timeperiod_name always
 alias always
 monday 00:00-24:00
 tuesday 00:00-24:00
 wednesday 00:00-24:00
 thursday 00:00-24:00
 friday 00:00-24:00
 saturday 00:00-24:00
 sunday 00:00-24:00
}
define command {
 command_name nothing
 command_line /bin/true
}
define contact {
 contact_name nobody
 service_notification_period always
 host_notification_period always
 service_notification_options n
 host_notification_options n
 service_notification_commands nothing
 host_notification_commands nothing
}
define hostgroup {
 hostgroup_name kova-machines
 alias machines
}
define host {
 host_name bus
 hostgroups kova-machines
 address 127.0.0.1
 check_command nothing
 max_check_attempts 1
 check_period always
 contacts nobody
}
define service {
 name generic-service
 register 0
 check_interval 1
 retry_interval 1
 max_check_attempts 1
 check_period always
 contacts nobody
}
"""


class Nagios(EngineTest):
    def result_of(self, machine):
        check = (MONITORING / "nagios/kova.cfg").read_text()
        self.write("objects.cfg", OBJECTS + check.replace(
            "/usr/bin/kovactl", f"{KOVACTL} --simulate {machine}"))
        self.write("nagios.cfg", NAGIOS.format(self.folder, "root"))
        self.start("nagios4", self.folder / "nagios.cfg")

        def service():
            blocks = (self.folder / "status.dat").read_text().split("}")
            text = next(block for block in blocks if "servicestatus {" in block)
            values = dict(line.strip().split("=", 1) for line in text.splitlines() if "=" in line)
            return values if values["has_been_checked"] == "1" else None

        return wait_for(service, 15, "Nagios has run the check")

    def test_runs_the_check(self):
        hot = {"base": "builtin", "codes": {"0x00820000": 3481}}
        service = self.result_of(self.write("hot.json", hot))
        self.assertEqual(service["current_state"], "1")
        self.assertEqual(service["plugin_output"],
                         "KOVA WARNING - TRK-7000/Temperatures/TRK7K VTIN 1 is beyond its "
                         "limit: 75 Cel (limit 70)")
        self.assertIn("'TRK-7000/Temperatures/TRK7K VTIN 1'=75;70;~:85;0;100", service["performance_data"])


class Icinga(EngineTest):
    def test_takes_the_definition(self):
        self.write("host.conf", 'include <itl>\n'
                   'object Endpoint "here" {}\nobject Zone "here" { endpoints = [ "here" ] }\n'
                   'object Host "bus" { check_command = "dummy"\n vars.kova = true\n'
                   ' zone = "here"\n vars.agent_endpoint = "here" }\n')
        found = subprocess.run(
            ["icinga2", "daemon", "-C", "-c", self.folder / "host.conf", "-c",
             MONITORING / "icinga/kova.conf", "-DNodeName=here", "-DZoneName=here",
             f"-DRunAsUser={os.environ.get('USER', 'root')}", "-DRunAsGroup=root",
             f"-DDataDir={self.folder}", f"-DLogDir={self.folder}", f"-DCacheDir={self.folder}",
             f"-DInitRunDir={self.folder}", f"-DSpoolDir={self.folder}"],
            capture_output=True, text=True, check=False)
        self.assertEqual(found.returncode, 0, found.stdout + found.stderr)
        self.assertIn("Instantiated 1 Service", found.stdout)


class Mqtt(EngineTest):
    def test_brings_the_pack_through_a_broker(self):
        port = str(free_ports(1)[0])
        self.write("broker.conf", f"listener {port} 127.0.0.1\nallow_anonymous true\n")
        self.start("mosquitto", "-c", self.folder / "broker.conf")
        topic = ["-h", "127.0.0.1", "-p", port, "-t", "kova/bus-042"]
        publish = f"{KOVACTL} --simulate senml --compact | tee sent | mosquitto_pub -r -s " + \
            " ".join(topic)
        wait_for(lambda: subprocess.run(["bash", "-o", "pipefail", "-c", publish], check=False,
                                        cwd=self.folder, capture_output=True).returncode == 0,
                 20, "the broker takes the pack")
        got = subprocess.run(["mosquitto_sub", *topic, "-C", "1", "-W", "10"], check=True,
                             capture_output=True, text=True).stdout
        self.assertEqual(json.loads(got), json.loads((self.folder / "sent").read_text()))
        self.assertGreater(len(json.loads(got)), 100)


if __name__ == "__main__":
    unittest.main()
