// The refined cell and the run's figures in the X-ray Diffraction mode.
#include "ui/XrayResults.h"

#include "ui/FitTable.h"

#include <QStringList>

namespace quarvex::ui {

namespace {

// A refined parameter with its unit; one the crystal system fixes has no error.
QString refinedValue(double value, double error, bool edge) {
    const QString unit = edge ? QStringLiteral("&nbsp;Å") : QStringLiteral("°");
    return error > 0.0 ? valueWithError(value, error) + unit
                       : QString::number(value, 'f', edge ? 5 : 3) + unit +
                             QStringLiteral(" <span style='color:#777'>fixed</span>");
}

} // namespace

QString refinedCellHtml(const RefinedCellRecord& refined, const std::array<float, 6>& reference) {
    const char* const names[] = {"a", "b", "c", "α", "β", "γ"};
    const bool known = reference[0] > 0.0F;
    const QString grey = QStringLiteral("<span style='color:#666'>%1</span>");
    QString html = QStringLiteral("<table cellspacing='0' cellpadding='1'>");
    // Edges on the left, the angles opposite them on the right; the reference values in grey.
    for (std::size_t i = 0; i < 3; ++i) {
        html += QStringLiteral("<tr>");
        for (const std::size_t p : {i, i + 3}) {
            const bool edge = p < 3;
            html += QStringLiteral("<td><i>%1</i>&nbsp;</td><td align='right'>%2</td>"
                                   "<td align='right'>&nbsp;%3&nbsp;&nbsp;&nbsp;</td>")
                        .arg(QString::fromUtf8(names[p]),
                             refinedValue(refined.cell[p], refined.error[p], edge),
                             known ? grey.arg(QString::number(static_cast<double>(reference[p]),
                                                              'f', edge ? 5 : 3))
                                   : QString());
        }
        html += QStringLiteral("</tr>");
    }
    html += QStringLiteral("<tr><td><i>V</i>&nbsp;</td><td align='right'>%1&nbsp;Å³</td>"
                           "<td></td><td colspan='3' align='right'>%2</td></tr></table>")
                .arg(valueWithError(refined.volume, refined.volumeError),
                     known ? grey.arg(QStringLiteral("in grey: the reference cell")) : QString());

    QStringList run{QString::fromStdString(refined.system),
                    QStringLiteral("%1 lines").arg(refined.lines),
                    QStringLiteral("rmse %1").arg(refined.rmse, 0, 'g', 3)};
    if (refined.machineErrorSearched) {
        run.append(QStringLiteral("machine error %1° (%2)")
                       .arg(refined.machineError, 0, 'f', 3)
                       .arg(refined.machineErrorConverged
                                ? QStringLiteral("search converged")
                                : QStringLiteral("search did not converge")));
    } else {
        run.append(QStringLiteral("no machine-error search"));
    }
    // Q is linear in the reciprocal-metric terms and the iteration starts from that linear
    // optimum, so no pass changing the cell is the normal outcome, not a failure.
    if (refined.iterationLimitHit) {
        run.append(QStringLiteral("iteration limit reached"));
    } else if (refined.iterations == 0) {
        run.append(QStringLiteral("linear solution"));
    } else {
        run.append(QStringLiteral("%1 iterations").arg(refined.iterations));
    }
    return html +
           QStringLiteral("<p style='margin-top:3px'>%1</p>").arg(run.join(QStringLiteral(" · ")));
}

} // namespace quarvex::ui
