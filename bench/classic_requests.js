// Compute Classic requests per second against ocw-emulator: one login, then
// cookie-carrying GETs over keep-alive connections (a single object, a
// detail list of the user container, a directory listing), sequentially and
// with several connections at once. Plain Node https, no SDK.
//
//   node bench/classic_requests.js /path/to/ocw-emulator [requests] [connections]
'use strict';
const {spawn} = require('child_process');
const fs = require('fs');
const https = require('https');
const os = require('os');
const path = require('path');
const readline = require('readline');

const [emulatorPath, total = '3000', parallel = '4'] = process.argv.slice(2);
if (!emulatorPath) {
    console.error('usage: node bench/classic_requests.js /path/to/ocw-emulator [requests] [connections]');
    process.exit(2);
}
const stateDir = fs.mkdtempSync(path.join(os.tmpdir(), 'ocw-bench-classic-'));
const emulator =
    spawn(emulatorPath, ['--state-dir', stateDir, '--seed', 'demo'], {stdio: ['ignore', 'pipe', 'inherit']});

function request(agent, ca, url, method, headers, body) {
    return new Promise((resolve, reject) => {
        const req = https.request(url, {method, agent, ca, headers}, (res) => {
            let data = '';
            res.on('data', (d) => (data += d));
            res.on('end', () => resolve({status: res.statusCode, headers: res.headers, body: data}));
        });
        req.on('error', reject);
        if (body) req.write(body);
        req.end();
    });
}

readline.createInterface({input: emulator.stdout}).once('line', async (line) => {
    const info = JSON.parse(line);
    const ca = fs.readFileSync(info.ca_file);
    const profile = fs.readFileSync(info.classic_profile, 'utf8');
    const password = /\npassword=(.*)\n/.exec(profile)[1];
    const user = `/Compute-${info.identity_domain}/${info.classic_user}`;
    try {
        const agent = new https.Agent({keepAlive: true, maxSockets: Number(parallel)});
        const login = await request(
            agent, ca, info.classic_endpoint + '/authenticate/', 'POST',
            {'Content-Type': 'application/oracle-compute-v3+json'}, JSON.stringify({user, password}));
        const cookie = login.headers['set-cookie'][0].split(';')[0];
        const list = await request(agent, ca, `${info.classic_endpoint}/instance${user}/`, 'GET', {Cookie: cookie});
        const one = JSON.parse(list.body).result[0].name;
        const cases = {
            'one instance': [`/instance${one}`, 'application/oracle-compute-v3+json'],
            'detail list of the user container': [`/instance${user}/`, 'application/oracle-compute-v3+json'],
            'directory of the user container': [`/instance${user}/`, 'application/oracle-compute-v3+directory+json'],
        };
        for (const [name, [p, accept]] of Object.entries(cases)) {
            for (const connections of [1, Number(parallel)]) {
                const perWorker = Math.floor(Number(total) / connections);
                const started = process.hrtime.bigint();
                await Promise.all(Array.from({length: connections}, async () => {
                    for (let i = 0; i < perWorker; i++) {
                        const r = await request(
                            agent, ca, info.classic_endpoint + p, 'GET', {Cookie: cookie, Accept: accept});
                        if (r.status !== 200) throw new Error(`${p}: ${r.status}`);
                    }
                }));
                const seconds = Number(process.hrtime.bigint() - started) / 1e9;
                console.log(JSON.stringify({
                    case: name,
                    connections,
                    requests: perWorker * connections,
                    per_second: Math.round((perWorker * connections) / seconds)
                }));
            }
        }
        agent.destroy();
    } catch (e) {
        console.error(e);
        process.exitCode = 1;
    }
    emulator.kill('SIGTERM');
    fs.rmSync(stateDir, {recursive: true, force: true});
});
