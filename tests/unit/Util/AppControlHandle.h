// An app-control handle of the platform that a test fills and that ends with the test.
#pragma once

#include <app_control.h>

#include <string>
#include <vector>

class AppControlHandle {
  public:
    AppControlHandle() { app_control_create(&handle_); }
    ~AppControlHandle() { app_control_destroy(handle_); }
    AppControlHandle(const AppControlHandle&) = delete;
    AppControlHandle& operator=(const AppControlHandle&) = delete;

    app_control_h& get() { return handle_; }

    void addText(const std::string& key, const std::string& value)
    {
        app_control_add_extra_data(handle_, key.c_str(), value.c_str());
    }

    /** The elements may be null. */
    void addList(const std::string& key, std::vector<const char*> texts)
    {
        app_control_add_extra_data_array(handle_, key.c_str(), texts.data(), static_cast<int>(texts.size()));
    }

  private:
    app_control_h handle_ = nullptr;
};
