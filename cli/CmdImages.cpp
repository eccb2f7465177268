// images list|import|delete and objects put|delete: restoring a machine image
// goes through object storage (upload, import, then remove the object).
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "Commands.h"
#include "Ocid.h"
#include "Output.h"
#include "Progress.h"
#include "RecordJson.h"
#include "Walk.h"

namespace ocw {

using boost::json::object;
using OracleCloudSDKWrapper::COracleCloudWrapper;

namespace {

void RunList(Session& s, const std::string& compartment, const std::string& name) {
    std::vector<oci::SVMInfoLib> images;
    const std::string c = s.compartmentOr(compartment);
    s.call("list images", [&](COracleCloudWrapper& f) {
        return f.GetTemplateInfoListFilterByName(images, c, name, 0, 0, "");
    });
    ListOutput out({{"displayName", "NAME"}, {"lifecycleState", "STATE"}, {"operatingSystem", "OS"},
                    {"launchMode", "LAUNCH_MODE"}, {"id", "ID"}});
    for (const oci::SVMInfoLib& image : images) out.add(ImageToJson(image));
    out.print(std::cout, s.json());
}

struct ImportOptions {
    std::string bucket, object, name, compartment, launchMode = "PARAVIRTUALIZED";
    bool noWait = false;
};

void RunImport(Session& s, const ImportOptions& o) {
    oci::SImageInfoLib image;
    image.displayName = o.name.empty() ? o.object : o.name;
    image.compartmentId = s.compartmentOr(o.compartment);
    image.launchMode = o.launchMode;
    s.call("import image from " + o.bucket + "/" + o.object,
           [&](COracleCloudWrapper& f) { return f.CreateImage(o.bucket, o.object, image); });
    std::string state = image.lifecycleState.empty() ? "IMPORTING" : image.lifecycleState;
    if (!o.noWait) {
        state = s.waitFor({"import image " + image.displayName, image.id,
                           [&](std::string& st) {
                               bool completed = false;
                               if (!s.cloud().IsImageImportOperationCompleted(image.id, completed, "")) return false;
                               st = completed ? "AVAILABLE" : "IMPORTING";
                               return true;
                           },
                           {"AVAILABLE"},
                           {}});
    }
    PrintResult(std::cout, "Image " + image.displayName + ": " + image.id + " (" + state + ")",
                object{{"id", image.id}, {"displayName", image.displayName}, {"lifecycleState", state}}, s.json());
}

void RunDeleteImage(Session& s, const std::string& id) {
    s.call("delete image " + id, [&](COracleCloudWrapper& f) { return f.DeleteImage(id); });
    PrintResult(std::cout, "Image " + id + " deleted", object{{"id", id}, {"lifecycleState", "DELETED"}}, s.json());
}

struct PutOptions {
    std::string bucket, object, file, text;
};

void RunPut(Session& s, const PutOptions& o) {
    std::string content;
    if (!o.file.empty()) {
        std::ifstream in(o.file, std::ios::binary);
        if (!in) throw CliError(kExitUsage, "cannot read " + o.file);
        std::ostringstream data;
        data << in.rdbuf();
        content = data.str();
    } else {
        content = o.text;
    }
    {
        Progress progress("upload " + std::to_string(content.size()) + " bytes to " + o.bucket + "/" + o.object);
        s.call("upload " + o.bucket + "/" + o.object,
               [&](COracleCloudWrapper& f) { return f.UploadToObjectStorage(o.bucket, o.object, content); });
    }
    PrintResult(std::cout, "Uploaded " + std::to_string(content.size()) + " bytes to " + o.bucket + "/" + o.object,
                object{{"bucket", o.bucket}, {"object", o.object}, {"size", content.size()}}, s.json());
}

// The objects of every bucket of the compartments walked (or of one bucket),
// with their bucket and compartment: what image imports left behind.
void RunListObjects(Session& s, const std::string& bucket, const std::string& compartment) {
    ListOutput out({{"name", "NAME"}, {"sizeBytes", "SIZE"}, {"timeCreated", "CREATED"}, {"bucket", "BUCKET"},
                    {"compartment", "COMPARTMENT"}});
    bool bucketSeen = false;
    ForEachCompartment(s, compartment, "list objects", [&](const oci::SContainerInfoLib& c) {
        std::vector<oci::SStorageBucketInfoLib> buckets;
        s.call("list buckets of compartment " + c.guid,
               [&](COracleCloudWrapper& f) { return f.GetBucketListForCompartment(buckets, c.guid, 0, ""); });
        const size_t before = out.size();
        for (const oci::SStorageBucketInfoLib& b : buckets) {
            if (!bucket.empty() && b.name != bucket) continue;
            bucketSeen = true;
            std::vector<oci::SStorageObjectInfoLib> objects;
            s.call("list objects of bucket " + b.name, [&](COracleCloudWrapper& f) { return f.ListObjects(b.name, objects); });
            for (const oci::SStorageObjectInfoLib& o : objects) {
                out.add(object{{"name", o.name},
                               {"sizeBytes", o.sizeBytes},
                               {"timeCreated", o.timeCreated},
                               {"md5", o.md5},
                               {"bucket", b.name},
                               {"compartment", c.name},
                               {"compartmentId", c.guid}});
            }
        }
        return out.size() - before;
    });
    if (!bucket.empty() && !bucketSeen) {
        throw CliError(kExitNotFound, "list objects: no bucket " + bucket +
                                          (compartment.empty() ? " in any compartment" : " in compartment " + compartment));
    }
    out.print(std::cout, s.json());
}

void RunDeleteObject(Session& s, const std::string& bucket, const std::string& objectName) {
    s.call("delete " + bucket + "/" + objectName,
           [&](COracleCloudWrapper& f) { return f.DeleteStorageObject(bucket, objectName); });
    PrintResult(std::cout, "Deleted " + bucket + "/" + objectName,
                object{{"bucket", bucket}, {"object", objectName}, {"deleted", true}}, s.json());
}

}  // namespace

void RegisterImageCommands(CLI::App& app, Action& action) {
    CLI::App* images = app.add_subcommand("images", "custom and platform images");
    images->require_subcommand(1);
    {
        struct Opts { std::string compartment, name; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = images->add_subcommand("list", "list the images usable in a compartment");
        AddCompartmentOption(*cmd, o->compartment);
        cmd->add_option("--name", o->name, "only images with this display name");
        cmd->callback([&action, o] { action = [o](Session& s) { RunList(s, o->compartment, o->name); }; });
    }
    {
        auto o = std::make_shared<ImportOptions>();
        CLI::App* cmd = images->add_subcommand("import", "import a VMDK object from object storage as an image");
        cmd->add_option("--bucket", o->bucket, "bucket name")->required();
        cmd->add_option("--object", o->object, "object name")->required();
        cmd->add_option("-n,--name", o->name, "image display name (default: the object name)");
        AddCompartmentOption(*cmd, o->compartment);
        cmd->add_option("--launch-mode", o->launchMode, "launch mode of the image")
            ->check(CLI::IsMember({"NATIVE", "EMULATED", "PARAVIRTUALIZED", "CUSTOM"}));
        cmd->add_flag("--no-wait", o->noWait, "return once the import is requested");
        cmd->callback([&action, o] { action = [o](Session& s) { RunImport(s, *o); }; });
    }
    {
        auto id = std::make_shared<std::string>();
        CLI::App* cmd = images->add_subcommand("delete", "delete an image");
        cmd->add_option("image", *id, "image OCID")->required()->check(OcidOf(kImageOcid));
        cmd->callback([&action, id] { action = [id](Session& s) { RunDeleteImage(s, *id); }; });
    }

    CLI::App* objects = app.add_subcommand("objects", "object storage objects (the tenancy's namespace is looked up)");
    objects->require_subcommand(1);
    {
        struct Opts { std::string bucket, compartment; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = objects->add_subcommand(
            "list", "list the objects of every bucket of every compartment (or of one bucket, one compartment)");
        cmd->add_option("bucket", o->bucket, "only this bucket");
        cmd->add_option("-c,--compartment", o->compartment, "only this compartment (default: every compartment)")
            ->check(OcidOf(kCompartmentOcid));
        cmd->callback([&action, o] { action = [o](Session& s) { RunListObjects(s, o->bucket, o->compartment); }; });
    }
    {
        auto o = std::make_shared<PutOptions>();
        CLI::App* cmd = objects->add_subcommand("put", "upload a file (or a text) as an object");
        cmd->add_option("bucket", o->bucket, "bucket name")->required();
        cmd->add_option("object", o->object, "object name")->required();
        auto* file = cmd->add_option("-f,--file", o->file, "file to upload")->check(CLI::ExistingFile);
        auto* text = cmd->add_option("--text", o->text, "text to upload instead of a file");
        file->excludes(text);
        cmd->callback([&action, o, file, text] {
            if (file->count() == 0 && text->count() == 0) throw CLI::RequiredError("--file or --text");
            action = [o](Session& s) { RunPut(s, *o); };
        });
    }
    {
        struct Opts { std::string bucket, object; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = objects->add_subcommand("delete", "delete an object");
        cmd->add_option("bucket", o->bucket, "bucket name")->required();
        cmd->add_option("object", o->object, "object name")->required();
        cmd->callback([&action, o] { action = [o](Session& s) { RunDeleteObject(s, o->bucket, o->object); }; });
    }
}

}  // namespace ocw
