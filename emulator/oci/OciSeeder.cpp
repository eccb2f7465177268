// The starting worlds of OciCloud::seed.
#include "oci/OciCloud.h"

#include <cstdio>

namespace ocwemu {

namespace {

struct PlatformImages {
    Resource* linux8 = nullptr;
    Resource* windows = nullptr;
};

PlatformImages SeedPlatformImages(ImageService& images, std::int64_t now) {
    PlatformImages p;
    p.linux8 = &images.seedPlatformImage("Oracle-Linux-8.9-2024.01.26-0", "Oracle Linux", "8", "PARAVIRTUALIZED", now);
    images.seedPlatformImage("Oracle-Linux-7.9-2024.01.26-0", "Oracle Linux", "7.9", "PARAVIRTUALIZED", now);
    images.seedPlatformImage("Canonical-Ubuntu-22.04-2024.02.18-0", "Canonical Ubuntu", "22.04", "PARAVIRTUALIZED",
                             now);
    p.windows = &images.seedPlatformImage("Windows-Server-2019-Standard-Edition-VM-2024.01.09-0", "Windows",
                                          "Server 2019 Standard", "NATIVE", now);
    return p;
}

void SeedDemo(OciCloud& c, const PlatformImages& img, std::int64_t now) {
    const OciWorld& w = c.world;
    const std::string home = w.homeRegion();
    const std::vector<std::string> ads = w.availabilityDomains(home);
    Resource& demo = c.identity.seedCompartment(w.tenancyId, "ocw-demo", now);
    Resource& apps = c.identity.seedCompartment(demo.id, "ocw-demo-apps", now);
    Resource& dbc = c.identity.seedCompartment(w.tenancyId, "ocw-demo-db", now);

    Resource& vcn = c.network.seedVcn(demo.id, home, "ocw-demo-vcn", "10.0.0.0/16", now);
    Resource& pub = c.network.seedSubnet(vcn, "ocw-demo-public", "10.0.0.0/24", "", now);
    Resource& priv = c.network.seedSubnet(vcn, "ocw-demo-private-ad1", "10.0.1.0/24", ads[0], now);

    Resource& web1 = c.compute.seedInstance(demo.id, ads[0], "ocw-web-1", "VM.Standard2.1", *img.linux8, pub, now);
    c.compute.seedInstance(demo.id, ads[0], "ocw-web-2", "VM.Standard.E4.Flex", *img.linux8, priv, now);
    c.compute.seedInstance(demo.id, ads[0], "ocw-win-1", "VM.Standard2.2", *img.windows, pub, now);
    c.compute.seedInstance(apps.id, ads[0], "ocw-app-1", "VM.Standard2.1", *img.linux8, pub, now);

    Resource& data = c.blockStorage.seedVolume(demo.id, home, ads[0], "ocw-data-1", 100, now);
    c.blockStorage.seedVolume(demo.id, home, ads[0], "ocw-scratch", 50, now);
    c.blockStorage.seedVolumeAttachment(web1, data, now);
    c.blockStorage.seedVolumeBackup(data, "ocw-data-1-backup", now);

    Resource& bucket = c.objectStorage.seedBucket(demo.id, home, "ocw-demo-bucket", now);
    c.objectStorage.seedObject(bucket, "hello.txt", "Hello from the OCI emulator\n", now);
    c.objectStorage.seedObject(bucket, "images/demo.vmdk", std::string(4096, '\0'), now);

    Resource& sys = c.database.seedDbSystem(dbc.id, ads[0], pub, "ocw-demo-db", "DEMODB", now);
    for (Resource* db : c.store.list("database", dbc.id, now))
        if (JStr(db->doc, "dbSystemId") == sys.id) c.database.seedBackup(*db, "ocw-demo-db-backup", now);

    // A second region with its own network and one instance.
    if (w.regions.size() > 1) {
        const std::string dr = w.regions[1].name;
        const std::vector<std::string> drAds = w.availabilityDomains(dr);
        Resource& drVcn = c.network.seedVcn(demo.id, dr, "ocw-dr-vcn", "10.1.0.0/16", now);
        Resource& drSub = c.network.seedSubnet(drVcn, "ocw-dr-public", "10.1.0.0/24", "", now);
        c.compute.seedInstance(demo.id, drAds[0], "ocw-dr-1", "VM.Standard2.1", *img.linux8, drSub, now);
    }
}

void SeedScale(OciCloud& c, const PlatformImages& img, int compartments, int instances, std::int64_t now) {
    const OciWorld& w = c.world;
    const std::string home = w.homeRegion();
    const std::vector<std::string> ads = w.availabilityDomains(home);
    std::vector<Resource*> comps;
    char name[64];
    for (int i = 0; i < compartments; ++i) {
        std::snprintf(name, sizeof name, "scale-%03d", i);
        comps.push_back(&c.identity.seedCompartment(w.tenancyId, name, now));
    }
    if (comps.empty() || instances <= 0) return;
    Resource& vcn = c.network.seedVcn(comps[0]->id, home, "scale-vcn", "10.0.0.0/8", now);
    Resource& subnet = c.network.seedSubnet(vcn, "scale-subnet", "10.0.0.0/16", "", now);
    for (int i = 0; i < instances; ++i) {
        Resource* comp = comps[static_cast<size_t>(i) % comps.size()];
        std::snprintf(name, sizeof name, "scale-vm-%05d", i);
        c.compute.seedInstance(comp->id, ads[static_cast<size_t>(i) % ads.size()], name, "VM.Standard2.1",
                               *img.linux8, subnet, now);
    }
}

}  // namespace

bool OciCloud::seed(const std::string& mode, int compartments, int instances, std::int64_t nowMs,
                    std::string& error) {
    if (mode != "demo" && mode != "empty" && mode != "scale") {
        error = "unknown seed '" + mode + "' (demo, empty or scale)";
        return false;
    }
    PlatformImages img = SeedPlatformImages(images, nowMs);
    try {
        if (mode == "demo") SeedDemo(*this, img, nowMs);
        if (mode == "scale") SeedScale(*this, img, compartments, instances, nowMs);
    } catch (const std::exception& e) {
        error = e.what();
        return false;
    }
    return true;
}

}  // namespace ocwemu
