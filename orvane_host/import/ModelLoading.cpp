#include "orvane_host/import/ModelLoading.h"

#include "orvane_host/import/detail/ImportSteps.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace OV::Host
{

class ModelLoading::Impl
{
public:
    Impl(std::string path, const ImportOptions& options) :
        m_path(std::move(path)), m_options(options),
        m_callback([this](float percent) { return Report(percent); }), m_progress(m_callback),
        m_thread([this] { Read(); })
    {
    }

    ~Impl()
    {
        isCancelled = true;
        m_thread.join();
    }

    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    bool IsReady()
    {
        const std::lock_guard lock(m_mutex);
        return m_isRead;
    }

    void Wait()
    {
        std::unique_lock lock(m_mutex);
        m_read.wait(lock, [this] { return m_isRead; });
    }

    ImportResult Take()
    {
        Wait();
        return ImportGuarded(m_path,
                             [this](ImportResult& result)
                             {
                                 if (std::exchange(m_isTaken, true))
                                 {
                                     throw std::logic_error("its model was taken before");
                                 }
                                 if (m_thrown)
                                 {
                                     std::rethrow_exception(m_thrown);
                                 }
                                 const FileContents contents = std::move(m_contents);
                                 BuildResult(contents, m_path, m_options, m_progress, result);
                             });
    }

    std::atomic<float> percent{0.0f};
    std::atomic<bool> isCancelled{false};

private:
    void Read()
    {
        try
        {
            m_contents = ReadModelFile(ModelSource(m_path), m_options, m_progress);
        }
        catch (...)
        {
            m_thrown = std::current_exception();
        }
        {
            const std::lock_guard lock(m_mutex);
            m_isRead = true;
        }
        m_read.notify_all();
    }

    bool Report(float done)
    {
        percent = done;
        return !isCancelled && (!m_options.progress || m_options.progress(done));
    }

    const std::string m_path;
    const ImportOptions m_options;
    const std::function<bool(float)> m_callback;
    ImportProgress m_progress; ///< of the other thread until it is done
    FileContents m_contents;   ///< likewise
    std::exception_ptr m_thrown;
    bool m_isTaken = false;
    std::mutex m_mutex;
    std::condition_variable m_read;
    bool m_isRead = false;
    std::thread m_thread; ///< last: it uses what stands above
};

ModelLoading::ModelLoading(const std::string& path, const ImportOptions& options) :
    m_impl(std::make_unique<Impl>(path, options))
{
}

ModelLoading::~ModelLoading() = default;

float ModelLoading::GetPercent() const
{
    return m_impl->percent;
}

void ModelLoading::Cancel()
{
    m_impl->isCancelled = true;
}

bool ModelLoading::IsReady() const
{
    return m_impl->IsReady();
}

void ModelLoading::Wait()
{
    m_impl->Wait();
}

ImportResult ModelLoading::Take()
{
    return m_impl->Take();
}

} // namespace OV::Host
