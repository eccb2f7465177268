// The starting worlds of the Classic account (see ClassicCloud::seed).
#include "classic/ClassicCloud.h"

#include "classic/ClassicJson.h"

#include <stdexcept>

namespace ocwemu {

using namespace classic;

namespace {

struct ShapeRow {
    const char* name;
    double cpus;
    int ramMb;
    int io;
};

const ShapeRow kShapes[] = {{"oc3", 2.0, 7680, 200},   {"oc4", 4.0, 15360, 400},   {"oc5", 8.0, 30720, 600},
                            {"oc6", 16.0, 61440, 800}, {"oc1m", 2.0, 15360, 200},  {"oc2m", 4.0, 30720, 400},
                            {"oc3m", 8.0, 61440, 600}, {"oc4m", 16.0, 122880, 800}};

const char* const kImages[] = {"/oracle/public/OL_7.2_UEKR4_x86_64", "/oracle/public/OL_6.8_UEKR4_x86_64",
                               "/oracle/public/Win2012R2_x64"};

void Check(Resource* r, const ApiResponse& why, const std::string& what) {
    if (!r) throw std::runtime_error("cannot seed " + what + ": " + why.body);
}

}  // namespace

bool ClassicCloud::seed(const std::string& mode, int instances, std::int64_t nowMs, std::string& error) {
    if (mode != "demo" && mode != "empty" && mode != "scale") {
        error = "unknown seed " + mode + " (demo, empty or scale)";
        return false;
    }
    if (!account_.exists) return true;
    try {
        for (const ShapeRow& s : kShapes)
            catalog_.make(kShape, s.name,
                          JObject{{"cpus", s.cpus},
                                  {"ram", s.ramMb},
                                  {"io", s.io},
                                  {"root_disk_size", 0},
                                  {"gpus", 0},
                                  {"is_root_ssd", false},
                                  {"ssd_data_size", 0},
                                  {"nds_iops_limit", 0},
                                  {"placement_requirements", JArray{}}},
                          nowMs);
        for (const char* image : kImages)
            catalog_.make(
                kMachineImage, image,
                JObject{{"account", "/oracle/public/cloud_storage"},
                        {"platform", std::string(image).find("Win") != std::string::npos ? "windows" : "linux"},
                        {"file", std::string(image).substr(15) + ".tar.gz"}},
                nowMs);
        catalog_.make(kSecList, account_.domainContainer() + "/default/default",
                      JObject{{"description", "the default security list"}}, nowMs);
        if (mode == "empty") return true;

        const std::string u = account_.userContainer();
        ApiResponse why;
        auto volume = [&](const std::string& name, const std::string& size, bool bootable) {
            JObject body{{"name", u + "/" + name}, {"size", size}, {"bootable", bootable}};
            if (bootable) body["imagelist"] = kImages[0];
            Resource* v = storage_.createVolume(body, nowMs, {{"Online", 0}}, why);
            Check(v, why, name);
            return v;
        };
        auto instance = [&](const std::string& name, const std::string& boot, const std::string& data) {
            JArray atts{JObject{{"index", 1}, {"volume", u + "/" + boot}}};
            if (!data.empty()) atts.push_back(JObject{{"index", 2}, {"volume", u + "/" + data}});
            JObject spec{{"name", u + "/" + name},
                         {"shape", "oc3"},
                         {"label", name},
                         {"storage_attachments", std::move(atts)},
                         {"boot_order", JArray{1}},
                         {"networking", JObject{{"eth0", JObject{{"seclists", JArray{JValue(u + "/web")}},
                                                                 {"nat", "ippool:/oracle/public/ippool"}}}}}};
            if (mode == "demo") spec["sshkeys"] = JArray{JValue(u + "/" + account_.user + "-key")};
            Resource* i = instances_.launch(spec, nowMs, why, {}, {{"running", 0}});
            Check(i, why, name);
            return i;
        };
        if (mode == "scale") {
            for (int n = 1; n <= std::min(instances, 500); ++n) {
                const std::string name = "vm" + std::to_string(n);
                volume(name + "-boot", "20G", true);
                instance(name, name + "-boot", "");
            }
            return true;
        }

        catalog_.make(kSshKey, u + "/" + account_.user + "-key",
                      JObject{{"key", "ssh-rsa AAAAB3NzaC1yc2EAAAADAQABAAABAQC7emulated " + account_.user}}, nowMs);
        catalog_.make(kSecList, u + "/web", JObject{{"description", "web servers"}, {"policy", "deny"}}, nowMs);
        catalog_.make(kIpNetwork, u + "/backend",
                      JObject{{"ipAddressPrefix", "192.168.10.0/24"}, {"description", "backend network"}}, nowMs);
        catalog_.make(kMachineImage, u + "/web-golden",
                      JObject{{"account", account_.domainContainer() + "/cloud_storage"},
                              {"file", "web-golden.tar.gz"},
                              {"description", "golden image of the web tier"}},
                      nowMs);
        catalog_.make(kIpReservation, u + "/web1-ip", JObject{{"permanent", true}, {"used", true}}, nowMs);

        for (const char* name : {"web1", "db1"}) {
            const std::string n = name;
            volume(n + "-boot", "20G", true);
            volume(n + "-data", n == "db1" ? "100G" : "50G", false);
            Resource* i = instance(n, n + "-boot", n + "-data");
            if (n == "web1")
                catalog_.make(
                    kIpAssociation, u + "/web1-ip-assoc",
                    JObject{{"vcable", JStr(i->doc, "vcable_id")}, {"parentpool", "ipreservation:" + u + "/web1-ip"}},
                    nowMs);
        }
        volume("scratch", "10G", false);
        storage_.seedSnapshot(*storage_.object(kVolume, u + "/web1-data", nowMs), u + "/web1-data/nightly", nowMs);
        storage_.seedSnapshot(*storage_.object(kVolume, u + "/db1-data", nowMs), u + "/db1-data/nightly", nowMs);

        // web2 was started by an orchestration; a saved configuration keeps
        // the _master, _instance and _storage orchestrations of an instance.
        volume("web2-boot", "20G", true);
        JObject tmpl{{"name", u + "/web2"},
                     {"shape", "oc3"},
                     {"label", "web2"},
                     {"storage_attachments", JArray{JObject{{"index", 1}, {"volume", u + "/web2-boot"}}}},
                     {"boot_order", JArray{1}}};
        for (const char* suffix : {"_master", "_instance", "_storage"}) {
            const std::string s = suffix;
            JObject object{{"label", "web2" + s}, {"type", s == "_storage" ? "StorageVolume" : "Instance"}};
            object["template"] = s == "_storage" ? JObject{{"name", u + "/web2-boot"}, {"size", "20G"}} : tmpl;
            JObject body{{"name", u + "/web2" + s},
                         {"description", "orchestration of web2"},
                         {"desired_state", s == "_master" ? "active" : "inactive"},
                         {"objects", JArray{std::move(object)}}};
            Check(orchestrations_.create(body, nowMs, true, why), why, "web2" + s);
        }
        dbcs_.seedInstance("orcl-db", nowMs);
        java_.seedInstance("shop-jcs", nowMs);
        mysql_.seedInstance("shop-mysql", nowMs);
        return true;
    } catch (const std::exception& e) {
        error = e.what();
        return false;
    }
}

}  // namespace ocwemu
