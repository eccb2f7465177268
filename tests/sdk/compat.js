// Starts ocw-emulator, then runs the official OCI SDK flows (flows.js) against it
// in a child process that trusts the emulator's CA. Exit code 0 only when every
// flow passed.
//
//   node compat.js /path/to/ocw-emulator
"use strict";
const { spawn } = require("child_process");
const fs = require("fs");
const os = require("os");
const path = require("path");
const readline = require("readline");

const emulatorPath = process.argv[2] || process.env.OCW_EMULATOR;
if (!emulatorPath) {
  console.error("usage: node compat.js /path/to/ocw-emulator");
  process.exit(2);
}
// Without the SDK installed ("npm ci" in this folder) there is nothing to run:
// exit with the code the test registration reports as skipped.
try {
  require.resolve("oci-core");
} catch (e) {
  console.error("the OCI SDK is not installed; run 'npm ci' in " + __dirname);
  process.exit(77);
}

const stateDir = fs.mkdtempSync(path.join(os.tmpdir(), "ocw-sdk-compat-"));
const emulator = spawn(
  emulatorPath,
  ["--state-dir", stateDir, "--seed", "demo", "--provision-ms", "300", "--page-size", "10"],
  { stdio: ["ignore", "pipe", "inherit"] }
);
let finished = false;
function finish(code) {
  if (finished) return;
  finished = true;
  emulator.kill("SIGTERM");
  fs.rmSync(stateDir, { recursive: true, force: true });
  process.exit(code);
}
const startTimer = setTimeout(() => {
  console.error("ocw-emulator did not become ready in 30 s");
  finish(1);
}, 30000);
emulator.on("exit", (code) => {
  if (!finished) {
    console.error(`ocw-emulator exited early with ${code}`);
    finish(1);
  }
});

readline.createInterface({ input: emulator.stdout }).once("line", (line) => {
  clearTimeout(startTimer);
  let info;
  try {
    info = JSON.parse(line);
  } catch (e) {
    console.error(`unexpected first line from ocw-emulator: ${line}`);
    return finish(1);
  }
  // Node reads extra CA certificates only at start-up, hence the child process.
  const flows = spawn(process.execPath, [path.join(__dirname, "flows.js")], {
    stdio: "inherit",
    env: Object.assign({}, process.env, {
      NODE_EXTRA_CA_CERTS: info.ca_file,
      OCW_EMULATOR_INFO: line,
      OCI_SDK_DEFAULT_RETRY_ENABLED: "false",
      OCI_SDK_DEFAULT_CIRCUITBREAKER_ENABLED: "false",
    }),
  });
  const flowTimer = setTimeout(() => {
    console.error("the SDK flows did not finish in 240 s");
    flows.kill("SIGKILL");
    finish(1);
  }, 240000);
  flows.on("exit", (code) => {
    clearTimeout(flowTimer);
    finish(code === 0 ? 0 : 1);
  });
});
