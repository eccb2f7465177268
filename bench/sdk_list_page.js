// Times the official OCI SDK for TypeScript listing one page of 1,000
// instances from ocw-emulator (seed "scale", one compartment). The SDK asks
// for brotli and gzip, so this shows what the emulator's answer encoding
// costs an outside client. Uses the SDK installed in tests/sdk ("npm ci").
//
//   node bench/sdk_list_page.js /path/to/ocw-emulator [repetitions]
'use strict';
const {spawn} = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');
const readline = require('readline');

module.paths.push(path.join(__dirname, '..', 'tests', 'sdk', 'node_modules'));

if (process.env.OCW_BENCH_INFO) {
    // The measuring child: it trusts the emulator's CA (NODE_EXTRA_CA_CERTS).
    const common = require('oci-common');
    const core = require('oci-core');
    const info = JSON.parse(process.env.OCW_BENCH_INFO);
    const repetitions = Number(process.env.OCW_BENCH_REPETITIONS);
    const provider = new common.ConfigFileAuthenticationDetailsProvider(info.oci_config, 'DEFAULT');
    const compute = new core.ComputeClient({authenticationDetailsProvider: provider});
    compute.endpoint = info.oci_endpoint;
    (async () => {
        const identity = require('oci-identity');
        const ids = new identity.IdentityClient({authenticationDetailsProvider: provider});
        ids.endpoint = info.oci_endpoint;
        const compartments = await ids.listCompartments({compartmentId: info.tenancy, limit: 100});
        const compartmentId = compartments.items[0].id;
        const times = [];
        let count = 0;
        for (let i = 0; i < repetitions + 1; i++) {
            const started = process.hrtime.bigint();
            const page = await compute.listInstances({compartmentId, limit: 1000});
            const ms = Number(process.hrtime.bigint() - started) / 1e6;
            count = page.items.length;
            if (i > 0) times.push(ms);  // the first call also opens the connection
        }
        times.sort((a, b) => a - b);
        const median = times[Math.floor(times.length / 2)];
        console.log(JSON.stringify({
            instances: count,
            repetitions,
            median_ms: +median.toFixed(1),
            min_ms: +times[0].toFixed(1),
            max_ms: +times[times.length - 1].toFixed(1)
        }));
    })().catch((e) => {
        console.error(e);
        process.exit(1);
    });
} else {
    const emulatorPath = process.argv[2];
    const repetitions = process.argv[3] || '15';
    if (!emulatorPath) {
        console.error('usage: node bench/sdk_list_page.js /path/to/ocw-emulator [repetitions]');
        process.exit(2);
    }
    const stateDir = fs.mkdtempSync(path.join(os.tmpdir(), 'ocw-bench-sdk-'));
    const emulator = spawn(
        emulatorPath,
        [
            '--state-dir', stateDir, '--seed', 'scale', '--compartments', '1', '--instances', '1000', '--page-size',
            '1000'
        ],
        {stdio: ['ignore', 'pipe', 'inherit']});
    readline.createInterface({input: emulator.stdout}).once('line', (line) => {
        const info = JSON.parse(line);
        const child = spawn(process.execPath, [__filename], {
            stdio: 'inherit',
            env: Object.assign({}, process.env, {
                NODE_EXTRA_CA_CERTS: info.ca_file,
                OCW_BENCH_INFO: line,
                OCW_BENCH_REPETITIONS: repetitions,
                OCI_SDK_DEFAULT_RETRY_ENABLED: 'false',
                OCI_SDK_DEFAULT_CIRCUITBREAKER_ENABLED: 'false'
            }),
        });
        child.on('exit', (code) => {
            emulator.kill('SIGTERM');
            fs.rmSync(stateDir, {recursive: true, force: true});
            process.exit(code);
        });
    });
}
