// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/Guard.h"
#include "app/model/ModelServices.h"

#include <QString>

#include <functional>
#include <optional>

namespace vantiro {

/// Keeps the model's list of takes: reads the takes folder in the background, at the start and whenever a take begins
/// or ends or the folder is another one. What was read while a take was being started is read again, since that take's
/// file may be among it. Main thread only.
class TakesList {
public:
    TakesList(AppModel& model, const ModelServices& services);

    TakesList(const TakesList&) = delete;
    TakesList& operator=(const TakesList&) = delete;

    /// Called once: reads the folder, and follows what changes it from here on.
    void start();
    /// Reads the folder anew, once more for however many calls come while it is being read.
    void refresh();
    /// A take was seen to end and its file is there: shows it in the file manager if the user wants that.
    void takeEnded(const QString& take);
    /// Makes the takes folder, then selects the newest take in it, or hands the folder to `open` if there is none.
    void showFolder(std::function<void(const QString& folder)> open);

private:
    /// What a list depends on.
    struct Request {
        QString folder;
        std::optional<QString> running;  ///< The take that is none yet.

        bool operator==(const Request&) const = default;
    };

    [[nodiscard]] Request present() const;
    void refreshIfOther();
    void read();
    void finish(int number, const Request& request, std::vector<Take> takes);

    AppModel& m_model;
    ModelServices m_services;
    int m_number = 0;                  ///< Of the latest reading: what an earlier one finds is dropped.
    std::optional<Request> m_reading;  ///< Under way.
    std::optional<Request> m_last;     ///< That was read or is being read.
    bool m_again = false;              ///< Once more after the reading that is under way.
    Guard m_guard;
};

}  // namespace vantiro
