// Real flows of the official OCI SDK for TypeScript against ocw-emulator.
// Configured by the emulator's oci-config (profile DEFAULT); only the endpoint
// is overridden. Run through compat.js, which starts the emulator and sets
// NODE_EXTRA_CA_CERTS and OCW_EMULATOR_INFO.
"use strict";
const assert = require("assert");
const crypto = require("crypto");
const common = require("oci-common");
const core = require("oci-core");
const database = require("oci-database");
const identity = require("oci-identity");
const objectstorage = require("oci-objectstorage");
const resourcesearch = require("oci-resourcesearch");
const workrequests = require("oci-workrequests");

const info = JSON.parse(process.env.OCW_EMULATOR_INFO);
const provider = new common.ConfigFileAuthenticationDetailsProvider(info.oci_config, "DEFAULT");
const waiterConfig = {
  terminationStrategy: new common.MaxTimeTerminationStrategy(60),
  delayStrategy: new common.FixedTimeDelayStrategy(1),
};

function client(Cls, auth = provider) {
  const c = new Cls({ authenticationDetailsProvider: auth });
  c.endpoint = info.oci_endpoint;
  return c;
}
const workRequests = client(workrequests.WorkRequestClient);
const identityClient = client(identity.IdentityClient);
const compute = client(core.ComputeClient);
const blockstorage = client(core.BlockstorageClient);
const network = client(core.VirtualNetworkClient);
const objects = client(objectstorage.ObjectStorageClient);
const search = client(resourcesearch.ResourceSearchClient);
const db = client(database.DatabaseClient);
const computeWaiter = compute.createWaiters(workRequests, waiterConfig);
const storageWaiter = blockstorage.createWaiters(workRequests, waiterConfig);

const ctx = {};
const results = [];

async function flow(name, fn) {
  const started = Date.now();
  try {
    await fn();
    results.push(true);
    console.log(`PASS ${name} (${Date.now() - started} ms)`);
  } catch (e) {
    results.push(false);
    const detail = e && e.statusCode ? `${e.statusCode} ${e.serviceCode}: ${e.message}` : e && e.stack ? e.stack : e;
    console.log(`FAIL ${name}: ${detail}`);
  }
}

async function countPages(request, call) {
  let pages = 0;
  const items = [];
  for await (const response of common.paginateResponses(request, call)) {
    pages += 1;
    items.push(...response.items);
  }
  return { pages, items };
}

async function main() {
  await flow("identity: tenancy, regions, availability domains", async () => {
    const t = await identityClient.getTenancy({ tenancyId: info.tenancy });
    assert.strictEqual(t.tenancy.id, info.tenancy);
    const subs = await identityClient.listRegionSubscriptions({ tenancyId: info.tenancy });
    assert.ok(subs.items.some((r) => r.isHomeRegion && r.regionName === info.region));
    const ads = await identityClient.listAvailabilityDomains({ compartmentId: info.tenancy });
    assert.strictEqual(ads.items.length, 3);
    ctx.ad = ads.items[0].name;
  });

  await flow("identity: compartments over several pages", async () => {
    const { pages, items } = await countPages(
      { compartmentId: info.tenancy, compartmentIdInSubtree: true, limit: 1 },
      (r) => identityClient.listCompartments(r)
    );
    assert.ok(pages >= 3, `expected several pages, got ${pages}`);
    const demo = items.find((c) => c.name === "ocw-demo");
    assert.ok(demo, "compartment ocw-demo is listed");
    ctx.compartment = demo.id;
    ctx.dbCompartment = items.find((c) => c.name === "ocw-demo-db").id;
  });

  await flow("compute: instances over several pages", async () => {
    const { pages, items } = await countPages(
      { compartmentId: ctx.compartment, limit: 2 },
      (r) => compute.listInstances(r)
    );
    assert.ok(pages >= 2, `expected several pages, got ${pages}`);
    assert.ok(items.length >= 3);
    assert.ok(items.every((i) => i.lifecycleState === "RUNNING"));
    const records = [];
    for await (const i of common.paginateRecords({ compartmentId: ctx.compartment, limit: 1 }, (r) =>
      compute.listInstances(r)
    ))
      records.push(i);
    assert.strictEqual(records.length, items.length);
  });

  await flow("compute: launch and wait for RUNNING", async () => {
    const images = await compute.listImages({ compartmentId: ctx.compartment, operatingSystem: "Oracle Linux" });
    const subnets = await network.listSubnets({ compartmentId: ctx.compartment });
    const subnet = subnets.items.find((s) => !s.availabilityDomain);
    const launched = await compute.launchInstance({
      launchInstanceDetails: {
        compartmentId: ctx.compartment,
        availabilityDomain: ctx.ad,
        displayName: "sdk-compat-vm",
        shape: "VM.Standard.E4.Flex",
        shapeConfig: { ocpus: 2, memoryInGBs: 16 },
        sourceDetails: { sourceType: "image", imageId: images.items[0].id },
        createVnicDetails: { subnetId: subnet.id },
        metadata: { ssh_authorized_keys: "ssh-rsa AAAA compat" },
      },
    });
    assert.strictEqual(launched.instance.lifecycleState, "PROVISIONING");
    ctx.instance = launched.instance.id;
    const done = await computeWaiter.forInstance({ instanceId: ctx.instance }, core.models.Instance.LifecycleState.Running);
    assert.strictEqual(done.instance.shapeConfig.ocpus, 2);
    const atts = await compute.listVnicAttachments({ compartmentId: ctx.compartment, instanceId: ctx.instance });
    const vnic = await network.getVnic({ vnicId: atts.items[0].vnicId });
    assert.ok(vnic.vnic.privateIp.startsWith("10.0.0."));
  });

  await flow("compute: stop, start, reset", async () => {
    const stop = await compute.instanceAction({ instanceId: ctx.instance, action: "STOP" });
    assert.strictEqual(stop.instance.lifecycleState, "STOPPING");
    await computeWaiter.forInstance({ instanceId: ctx.instance }, core.models.Instance.LifecycleState.Stopped);
    await compute.instanceAction({ instanceId: ctx.instance, action: "START" });
    await computeWaiter.forInstance({ instanceId: ctx.instance }, core.models.Instance.LifecycleState.Running);
    await compute.instanceAction({ instanceId: ctx.instance, action: "SOFTRESET" });
    await computeWaiter.forInstance({ instanceId: ctx.instance }, core.models.Instance.LifecycleState.Running);
  });

  await flow("block storage: create, attach and back up a volume", async () => {
    const created = await blockstorage.createVolume({
      createVolumeDetails: { compartmentId: ctx.compartment, availabilityDomain: ctx.ad, displayName: "sdk-vol", sizeInGBs: 60 },
    });
    ctx.volume = created.volume.id;
    await storageWaiter.forVolume({ volumeId: ctx.volume }, core.models.Volume.LifecycleState.Available);
    const att = await compute.attachVolume({
      attachVolumeDetails: { type: "iscsi", instanceId: ctx.instance, volumeId: ctx.volume, displayName: "sdk-att" },
    });
    ctx.attachment = att.volumeAttachment.id;
    const attached = await computeWaiter.forVolumeAttachment(
      { volumeAttachmentId: ctx.attachment },
      core.models.VolumeAttachment.LifecycleState.Attached
    );
    const a = attached.volumeAttachment;
    assert.strictEqual(a.attachmentType, "iscsi");
    assert.ok(a.ipv4 && a.iqn && a.port === 3260, "iSCSI target once attached");
    const backup = await blockstorage.createVolumeBackup({
      createVolumeBackupDetails: { volumeId: ctx.volume, displayName: "sdk-backup", type: "FULL" },
    });
    ctx.backup = backup.volumeBackup.id;
    const done = await storageWaiter.forVolumeBackup(
      { volumeBackupId: ctx.backup },
      core.models.VolumeBackup.LifecycleState.Available
    );
    assert.strictEqual(done.volumeBackup.uniqueSizeInMbs, 60 * 1024);
  });

  await flow("block storage: restore a volume from its backup", async () => {
    const restored = await blockstorage.createVolume({
      createVolumeDetails: {
        compartmentId: ctx.compartment,
        availabilityDomain: ctx.ad,
        displayName: "sdk-restored",
        sourceDetails: { type: "volumeBackup", id: ctx.backup },
      },
    });
    const done = await storageWaiter.forVolume({ volumeId: restored.volume.id }, core.models.Volume.LifecycleState.Available);
    assert.strictEqual(done.volume.sizeInGBs, 60);
    assert.strictEqual(done.volume.sourceDetails.id, ctx.backup);
    await blockstorage.deleteVolume({ volumeId: restored.volume.id });
  });

  await flow("compute: detach, terminate and wait for TERMINATED", async () => {
    await compute.detachVolume({ volumeAttachmentId: ctx.attachment });
    await computeWaiter.forVolumeAttachment(
      { volumeAttachmentId: ctx.attachment },
      core.models.VolumeAttachment.LifecycleState.Detached
    );
    await compute.terminateInstance({ instanceId: ctx.instance, preserveBootVolume: false });
    await computeWaiter.forInstance({ instanceId: ctx.instance }, core.models.Instance.LifecycleState.Terminated);
  });

  await flow("object storage: put, get, list, delete", async () => {
    const ns = (await objects.getNamespace({})).value;
    assert.strictEqual(ns, info.namespace);
    const body = "payload from the OCI SDK " + Date.now();
    await objects.putObject({
      namespaceName: ns,
      bucketName: "ocw-demo-bucket",
      objectName: "sdk/compat.txt",
      putObjectBody: body,
      contentLength: Buffer.byteLength(body),
    });
    const got = await objects.getObject({ namespaceName: ns, bucketName: "ocw-demo-bucket", objectName: "sdk/compat.txt" });
    const text = await streamToString(got.value);
    assert.strictEqual(text, body);
    const listed = await objects.listObjects({ namespaceName: ns, bucketName: "ocw-demo-bucket", prefix: "sdk/" });
    assert.deepStrictEqual(listed.listObjects.objects.map((o) => o.name), ["sdk/compat.txt"]);
    await objects.deleteObject({ namespaceName: ns, bucketName: "ocw-demo-bucket", objectName: "sdk/compat.txt" });
    await assert.rejects(
      objects.headObject({ namespaceName: ns, bucketName: "ocw-demo-bucket", objectName: "sdk/compat.txt" }),
      (e) => e.statusCode === 404
    );
  });

  await flow("search: VCNs, their subnets, all resources", async () => {
    const vcns = await search.searchResources({
      searchDetails: { type: "Structured", query: "query Vcn resources" },
    });
    assert.ok(vcns.resourceSummaryCollection.items.length >= 1);
    const vcn = vcns.resourceSummaryCollection.items.find((v) => v.displayName === "ocw-demo-vcn");
    const subnets = await search.searchResources({
      searchDetails: { type: "Structured", query: `query Subnet resources where vcnId = '${vcn.identifier}'` },
    });
    assert.strictEqual(subnets.resourceSummaryCollection.items.length, 2);
    let pages = 0;
    let total = 0;
    let page;
    do {
      const r = await search.searchResources({
        searchDetails: { type: "Structured", query: "query all resources" },
        limit: 25,
        page,
      });
      pages += 1;
      total += r.resourceSummaryCollection.items.length;
      page = r.opcNextPage;
    } while (page);
    assert.ok(pages >= 2 && total > 25, `all resources over ${pages} pages, ${total} items`);
  });

  await flow("database: systems, homes, databases, nodes, backups", async () => {
    const systems = await db.listDbSystems({ compartmentId: ctx.dbCompartment });
    assert.strictEqual(systems.items.length, 1);
    const sys = systems.items[0];
    const homes = await db.listDbHomes({ compartmentId: ctx.dbCompartment, dbSystemId: sys.id });
    const dbs = await db.listDatabases({ compartmentId: ctx.dbCompartment, dbHomeId: homes.items[0].id });
    assert.strictEqual(dbs.items[0].dbName, "DEMODB");
    const nodes = await db.listDbNodes({ compartmentId: ctx.dbCompartment, dbSystemId: sys.id });
    assert.strictEqual(nodes.items.length, 1);
    const backups = await db.listBackups({ databaseId: dbs.items[0].id });
    assert.strictEqual(backups.items[0].lifecycleState, "ACTIVE");
  });

  await flow("auth: a key the emulator does not know gets 401", async () => {
    const { privateKey, publicKey } = crypto.generateKeyPairSync("rsa", { modulusLength: 2048 });
    const der = publicKey.export({ type: "spki", format: "der" });
    const fingerprint = crypto.createHash("md5").update(der).digest("hex").match(/../g).join(":");
    const stranger = new common.SimpleAuthenticationDetailsProvider(
      info.tenancy,
      info.user,
      fingerprint,
      privateKey.export({ type: "pkcs8", format: "pem" }),
      null,
      common.Region.US_PHOENIX_1
    );
    const c = client(identity.IdentityClient, stranger);
    await assert.rejects(c.getTenancy({ tenancyId: info.tenancy }), (e) => e.statusCode === 401 && e.serviceCode === "NotAuthenticated");
  });

  const passed = results.filter(Boolean).length;
  console.log(`${passed} passed, ${results.length - passed} failed`);
  process.exit(passed === results.length ? 0 : 1);
}

async function streamToString(value) {
  if (typeof value === "string") return value;
  if (value && typeof value.getReader === "function") {
    const reader = value.getReader();
    const chunks = [];
    for (;;) {
      const { done, value: chunk } = await reader.read();
      if (done) break;
      chunks.push(Buffer.from(chunk));
    }
    return Buffer.concat(chunks).toString("utf8");
  }
  const chunks = [];
  for await (const chunk of value) chunks.push(Buffer.from(chunk));
  return Buffer.concat(chunks).toString("utf8");
}

main().catch((e) => {
  console.log(`FAIL runner: ${e && e.stack ? e.stack : e}`);
  process.exit(1);
});
