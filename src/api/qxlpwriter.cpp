#include "api/qxlpwriter.h"

#include <fstream>
#include <ostream>
#include <sstream>

#include "api/apierrors.h"
#include "api/qxmodel.h"
#include "builder/lpwriter.h"
#include "builder/modelgraph.h"

#define UNIT "src/api/qxlpwriter"

void QXLpWriter::write(const QXModel* model, std::ostream& out) {
    if (!model) ApiErrors::fail(QX_HERE, ApiErrors::nullArgument("model"));
    ApiErrors::checkPausedOrStopped(model->getQuarrix(), QX_HERE);
    ModelGraph graph;
    model->fillGraph(graph, true);
    LpWriter writer(graph, &out);
    writer.write();
}

void QXLpWriter::write(const QXModel* model, const std::string& fileName) {
    if (!model) ApiErrors::fail(QX_HERE, ApiErrors::nullArgument("model"));
    ApiErrors::checkPausedOrStopped(model->getQuarrix(), QX_HERE);
    if (fileName.empty()) ApiErrors::fail(QX_HERE, ApiErrors::emptyArgument("fileName"));
    // Written in memory first, so that a refused model leaves no file.
    std::ostringstream text;
    write(model, text);
    std::ofstream file(fileName, std::ios::out | std::ios::trunc);
    if (!file) ApiErrors::fail(QX_HERE, "Cannot write the linear program in file '" + fileName + "'.");
    file << text.str();
}
