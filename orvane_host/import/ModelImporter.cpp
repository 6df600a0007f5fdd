#include "orvane_host/import/ModelImporter.h"

#include "orvane_host/import/detail/AssimpReader.h"
#include "orvane_host/import/detail/CoplanarFaces.h"
#include "orvane_host/import/detail/FormatGuess.h"
#include "orvane_host/import/detail/ImportSteps.h"
#include "orvane_host/import/detail/IsolatedProcess.h"
#include "orvane_host/import/detail/MemoryFile.h"
#include "orvane_host/import/detail/ModelArchive.h"
#include "orvane_host/import/detail/ModelText.h"
#include "orvane_host/import/detail/PictureConverter.h"
#include "orvane_host/import/detail/SceneBuilder.h"
#include "orvane_host/import/detail/StepSchema.h"
#include "orvane_host/import/detail/StepSite.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>
#include <istream>
#include <limits>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>

namespace OV::Host
{

namespace
{

/// Share of the whole that reading the file takes; the rest is building the scene.
constexpr float kReadingShare = 0.8f;
constexpr std::size_t kMaxWarnings = 50;
constexpr std::uint64_t kFirstSeconds = 20;

/// For the person who chose the file, who has no limits to raise.
const char* RemedyFor(ImportStatus status)
{
    switch (status)
    {
    case ImportStatus::NotFound:
        return "Check the spelling of the path";
    case ImportStatus::NotReadable:
        return "Choose a regular file that you may read";
    case ImportStatus::TooLarge:
    case ImportStatus::LimitExceeded:
        return "Split the model, or leave out what need not be seen";
    case ImportStatus::Unsupported:
        return "Convert it to glTF, OBJ, FBX, Collada, IFC2X3 or another format that can be read";
    case ImportStatus::Malformed:
        return "Check that the file is complete, or export it again";
    case ImportStatus::OutOfMemory:
        return "Split the model, or close other programs";
    case ImportStatus::TimedOut:
        return "Simplify the model, or split it";
    case ImportStatus::Crashed:
        return "The file is damaged or beyond the parser: export it again, or to another format";
    case ImportStatus::Cancelled:
        return "Import it again to have it";
    default:
        return "Try again, and export the model to another format if that fails too";
    }
}

const char* ReasonFor(ImportStatus status)
{
    switch (status)
    {
    case ImportStatus::OutOfMemory:
        return "it takes more memory than there is or than the limit allows";
    case ImportStatus::TimedOut:
        return "it takes longer than the limit allows";
    case ImportStatus::LimitExceeded:
        return "it holds more than the limits allow";
    case ImportStatus::Crashed:
        return "the importer crashed on this file";
    case ImportStatus::Cancelled:
        return "the import was cancelled";
    default:
        return "something unforeseen went wrong";
    }
}

/// Leaves no scene behind, whatever had been made.
void Fail(ImportResult& result, ImportStatus status, const std::string& reason = std::string())
{
    const std::string file = result.error.file;
    result = ImportResult();
    result.status = status;
    result.error.file = file;
    result.error.reason = reason.empty() ? ReasonFor(status) : reason;
    result.error.remedy = RemedyFor(status);
}

/// Pictures would be taken for point clouds or worse by some parsers.
bool IsPicture(const std::string& path)
{
    char start[12] = {};
    std::ifstream(path, std::ios::in | std::ios::binary).read(start, sizeof(start));
    const auto has = [&start](const char* magic, int at)
    { return std::memcmp(start + at, magic, std::strlen(magic)) == 0; };
    return has("\x89PNG", 0) || has("\xFF\xD8\xFF", 0) || has("GIF8", 0) || (has("RIFF", 0) && has("WEBP", 8));
}

/// @return Done when the file can be handed to the parser.
ReadOutcome CheckFile(const std::string& path, const ImportLimits& limits, std::uint64_t& size)
{
    if (path.empty() || path.find('\0') != std::string::npos)
    {
        return {ImportStatus::NotFound, "the path is empty or no path"};
    }
    struct stat info = {};
    if (stat(path.c_str(), &info) != 0)
    {
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        return {isMissing ? ImportStatus::NotFound : ImportStatus::NotReadable,
                isMissing ? "there is no such file" : std::strerror(errno)};
    }
    if (!S_ISREG(info.st_mode))
    {
        return {ImportStatus::NotReadable,
                S_ISDIR(info.st_mode) ? "it is a folder" : "it is no regular file"};
    }
    errno = 0;
    if (!std::ifstream(path, std::ios::in | std::ios::binary))
    {
        return {ImportStatus::NotReadable, errno ? std::strerror(errno) : "it does not open"};
    }
    size = static_cast<std::uint64_t>(info.st_size);
    if (size == 0)
    {
        return {ImportStatus::Malformed, "it is empty"};
    }
    if (size > limits.fileBytes)
    {
        return {ImportStatus::TooLarge, "it has more than " + std::to_string(limits.fileBytes) + " bytes"};
    }
    if (IsPicture(path))
    {
        return {ImportStatus::Unsupported, "it is a picture, not a model"};
    }
    return {};
}

/// What the parser leaves out of a building's file: where it stands.
void ReadSite(const std::string& path, ModelData& model)
{
    if (!IsBuildingSchema(ReadStepSchema(path)))
    {
        return;
    }
    // The size of the file was checked before it was handed to the parser.
    const std::unique_ptr<std::istream> stream = OpenModelText(path, std::numeric_limits<std::size_t>::max());
    const StepSite site = ReadStepSite(*stream);
    if (site.place)
    {
        model.latitude = site.place->latitude;
        model.longitude = site.place->longitude;
    }
    if (site.north)
    {
        // The file's +Y is the scene's -Z.
        model.north = *site.north;
    }
}

/// Reads without an exception getting out of it.
ReadOutcome ReadGuarded(const ModelSource& source, const ImportOptions& options, const ReadHooks& hooks,
                        ModelData& model)
{
    try
    {
        std::uint64_t openedBytes = 0;
        const auto opened = [&openedBytes, &hooks](std::uint64_t bytes)
        {
            openedBytes = bytes;
            if (hooks.opened)
            {
                hooks.opened(bytes);
            }
        };
        const ReadOutcome outcome = ReadWithAssimp(source, options, {hooks.progress, opened}, model);
        if (outcome.status == ImportStatus::Done)
        {
            ReadSite(source.content, model);
            if (options.orderCoplanar)
            {
                OrderCoplanarFaces(model, options.showBacks);
            }
            if (options.textures)
            {
                ConvertPictures(model, source.name, options,
                                [&](std::uint64_t bytes) { opened(openedBytes + bytes); });
            }
        }
        return outcome;
    }
    catch (const std::bad_alloc&)
    {
        return {ImportStatus::OutOfMemory, std::string()};
    }
    catch (const std::exception& error)
    {
        return {ImportStatus::Malformed, error.what()};
    }
}

/// A file of another schema is not broken: it cannot be told from one that is by how it is read.
void NameSchema(const std::string& path, ReadOutcome& outcome, ModelData& model)
{
    const bool isDone = outcome.status == ImportStatus::Done;
    const std::string schema =
        isDone || outcome.status == ImportStatus::Malformed ? ReadStepSchema(path) : std::string();
    if (schema.empty() || IsStepSchemaRead(schema))
    {
        return;
    }
    if (isDone)
    {
        model.warnings.insert(model.warnings.begin(), "The file states the schema " + schema
                                  + "; only what it has in common with IFC2X3 is read.");
        return;
    }
    outcome = {ImportStatus::Unsupported, "it states the schema " + schema + ", and IFC2X3 is what can be read"};
}

IsolationLimits IsolationLimitsOf(const ImportLimits& limits)
{
    IsolationLimits isolation;
    isolation.memoryBytes = limits.memoryBytes;
    // What memory could not hold need not be carried over.
    isolation.outputBytes = limits.memoryBytes;
    isolation.cpuSeconds = limits.cpuSeconds;
    isolation.wallSeconds = limits.wallSeconds;
    return isolation;
}

ReadOutcome OutcomeOf(const IsolationOutcome& isolated)
{
    switch (isolated.end)
    {
    case IsolationEnd::Finished:
        return {};
    case IsolationEnd::OutOfMemory:
        return {ImportStatus::OutOfMemory, std::string()};
    case IsolationEnd::OutOfTime:
        return {ImportStatus::TimedOut, std::string()};
    case IsolationEnd::TooMuchOutput:
        return {ImportStatus::LimitExceeded, std::string()};
    case IsolationEnd::Cancelled:
        return {ImportStatus::Cancelled, std::string()};
    case IsolationEnd::NotStarted:
        return {ImportStatus::Failed, "no process could be started to read it in"};
    case IsolationEnd::OutputLost:
        return {ImportStatus::Failed, "what was read of it could not be taken over"};
    case IsolationEnd::Crashed:
        break;
    }
    const std::string end = isolated.signal ? strsignal(isolated.signal)
                                            : "exit status " + std::to_string(isolated.exitStatus);
    return {ImportStatus::Crashed, std::string(ReasonFor(ImportStatus::Crashed)) + " (" + end + ")"};
}

ReadOutcome ReadArchive(const IsolationOutcome& isolated, ModelData& model)
{
    const ReadOutcome damaged = {ImportStatus::Crashed, std::string()};
    const std::size_t size = isolated.outputBytes;
    void* bytes =
        size ? mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, isolated.output, 0) : MAP_FAILED;
    if (bytes == MAP_FAILED)
    {
        return damaged;
    }
    model.keepAlive.push_back(std::shared_ptr<const void>(bytes, [size](const void* mapped)
                                                          { munmap(const_cast<void*>(mapped), size); }));
    ArchiveReader archive(bytes, size);
    ReadOutcome outcome;
    archive.Value(outcome.status);
    archive.Text(outcome.reason);
    if (!archive.IsGood())
    {
        return damaged;
    }
    if (outcome.status == ImportStatus::Done && !ReadModel(archive, model))
    {
        return damaged;
    }
    return outcome;
}

ReadOutcome ReadIsolated(const ModelSource& source, const ImportOptions& options,
                         const std::function<bool(float)>& progress, ModelData& model)
{
    const auto work = [&source, &options](IsolatedWork& side)
    {
        ReadHooks hooks;
        hooks.progress = [&side](float share)
        {
            side.Report(share);
            return true;
        };
        // A small file that keeps the parser busy for long has caught it in a loop.
        hooks.opened = [&side, &options](std::uint64_t bytes)
        { side.AllowSeconds(kFirstSeconds + bytes * options.limits.cpuSecondsPerMegabyte / 1'000'000); };
        ModelData parsed;
        const ReadOutcome outcome = ReadGuarded(source, options, hooks, parsed);
        ArchiveWriter archive(side.Output());
        archive.Value(outcome.status);
        archive.Text(outcome.reason);
        if (outcome.status == ImportStatus::Done)
        {
            WriteModel(archive, parsed);
        }
        if (!archive.Finish())
        {
            throw std::bad_alloc();
        }
    };
    const IsolationOutcome isolated = RunIsolated(IsolationLimitsOf(options.limits), work, progress);
    const ReadOutcome outcome = OutcomeOf(isolated);
    return outcome.status == ImportStatus::Done ? ReadArchive(isolated, model) : outcome;
}

/// Takes a stream in to its end, which may be long in coming.
std::shared_ptr<const MemoryFile> ReadStream(int descriptor, std::uint64_t most, ReadOutcome& outcome)
{
    int trouble = 0;
    auto file = MemoryFile::Read(descriptor, most, trouble);
    if (!file && trouble == EFBIG)
    {
        outcome = {ImportStatus::TooLarge, "it has more than " + std::to_string(most) + " bytes"};
    }
    else if (!file && (trouble == ENOMEM || trouble == ENOSPC))
    {
        outcome = {ImportStatus::OutOfMemory, std::string()};
    }
    else if (!file)
    {
        const bool hasNoNames = trouble == ENOENT;
        outcome = {ImportStatus::NotReadable,
                   hasNoNames ? "there is no /proc here, by which a stream is read" : std::strerror(trouble)};
    }
    return file;
}

void LimitWarnings(std::vector<std::string>& warnings)
{
    if (warnings.size() > kMaxWarnings)
    {
        const std::size_t more = warnings.size() - kMaxWarnings;
        warnings.resize(kMaxWarnings);
        warnings.push_back("And " + std::to_string(more) + " more of the kind.");
    }
}

} // namespace

FileContents ReadModelFile(const ModelSource& source, const ImportOptions& options, ImportProgress& progress)
{
    FileContents contents;
    contents.outcome = CheckFile(source.content, options.limits, contents.fileBytes);
    if (contents.outcome.status != ImportStatus::Done)
    {
        return contents;
    }
    // What the host's callback throws must not be taken for trouble with the file.
    std::exception_ptr thrown;
    const auto reading = [&progress, &thrown](float share)
    {
        try
        {
            return !thrown && progress(share * kReadingShare);
        }
        catch (...)
        {
            thrown = std::current_exception();
            return false;
        }
    };
    contents.outcome = options.isolate ? ReadIsolated(source, options, reading, contents.model)
                                       : ReadGuarded(source, options, {reading, nullptr}, contents.model);
    if (thrown)
    {
        std::rethrow_exception(thrown);
    }
    NameSchema(source.content, contents.outcome, contents.model);
    return contents;
}

void BuildResult(const FileContents& contents, const std::string& name, const ImportOptions& options,
                 ImportProgress& progress, ImportResult& result)
{
    if (contents.outcome.status != ImportStatus::Done)
    {
        Fail(result, contents.outcome.status, contents.outcome.reason);
        return;
    }
    result.report.fileBytes = contents.fileBytes;
    const auto building = [&progress](float share)
    { return progress(kReadingShare + share * (1.0f - kReadingShare)); };
    BuildScene(contents.model, name, options, building, result);
    if (!result.scene)
    {
        Fail(result, result.status, result.error.reason);
        return;
    }
    LimitWarnings(result.report.warnings);
    progress(1.0f);
}

ImportResult ImportGuarded(const std::string& path, const std::function<void(ImportResult&)>& work)
{
    ImportResult result;
    result.error.file = path;
    try
    {
        work(result);
    }
    catch (const std::bad_alloc&)
    {
        Fail(result, ImportStatus::OutOfMemory);
    }
    catch (const std::exception& error)
    {
        Fail(result, ImportStatus::Failed, error.what());
    }
    catch (...)
    {
        // A host's progress callback may throw anything.
        Fail(result, ImportStatus::Failed);
    }
    return result;
}

ImportResult ModelImporter::Import(const std::string& path, const ImportOptions& options)
{
    return ImportGuarded(path,
                         [&](ImportResult& result)
                         {
                             ImportProgress progress(options.progress);
                             const FileContents contents = ReadModelFile(ModelSource(path), options, progress);
                             BuildResult(contents, path, options, progress, result);
                         });
}

ImportResult ModelImporter::ImportStream(int descriptor, const std::string& format, const ImportOptions& options)
{
    const std::string name = "standard input";
    return ImportGuarded(name,
                         [&](ImportResult& result)
                         {
                             ImportProgress progress(options.progress);
                             ReadOutcome outcome;
                             const auto file = ReadStream(descriptor, options.limits.fileBytes, outcome);
                             if (!file)
                             {
                                 Fail(result, outcome.status, outcome.reason);
                                 return;
                             }
                             const std::string ending = format.empty() ? GuessFormat(file->GetPath()) : format;
                             const ModelSource source(ending.empty() ? name : name + "." + ending, file->GetPath());
                             const FileContents contents = ReadModelFile(source, options, progress);
                             BuildResult(contents, source.name, options, progress, result);
                             if (ending.empty() && result.status == ImportStatus::Unsupported)
                             {
                                 result.error.remedy = "Name its format, such as obj, or convert it to glTF";
                             }
                         });
}

std::vector<ImportFormat> ModelImporter::ListFormats()
{
    return ListAssimpFormats();
}

LightNode* ModelImporter::AddDefaultLights(Scene& scene, float ambientLevel)
{
    if (!scene.GetLights().empty())
    {
        return nullptr;
    }
    const float strength = 1.0f - std::clamp(ambientLevel, 0.0f, 1.0f);
    auto* light = new LightNode(&scene);
    light->SetColor(strength, strength, strength);
    light->SetAmbient(1.0f, 1.0f, 1.0f);
    light->SetLocalDirection(Vector(0.35f, -0.6f, -1.0f));
    scene.GetCameraNode()->AddChild(light, false);
    return light;
}

} // namespace OV::Host
