// The one way the core reaches a service that tests (or another front end)
// may replace: Seam<Service>::get() gives the installed service, or the
// system's when none is installed. A replacement is installed for a scope by
// a Seam<Service>::Override; overrides nest, each restoring the one before.
// An override holds in the thread that installed it only: a front end that
// talks to several printers at once, a thread each, installs its own in each.
//
// Each service declares its system default next to its class:
//     template <> Clock& Seam<Clock>::systemDefault();
// and defines it in its .cpp.
#pragma once

template <typename Service>
class Seam {
public:
    static Service& get()
    {
        Service* service = installed();
        return service != nullptr ? *service : systemDefault();
    }

    // The service the system provides; specialized for each service.
    static Service& systemDefault();

    // Installs `replacement` (not owned) for the lifetime of the object.
    class Override {
    public:
        explicit Override(Service& replacement) : m_Previous(installed()) { installed() = &replacement; }
        ~Override() { installed() = m_Previous; }
        Override(const Override&) = delete;
        Override& operator=(const Override&) = delete;

    private:
        Service* m_Previous;
    };

private:
    static Service*& installed()
    {
        static thread_local Service* service = nullptr;
        return service;
    }
};
