#include "detection/result_codec.h"

#include "dravik/joints.h"

#include <set>

namespace dravik::json {

DravikResult readResult(const Node& node) {
    DravikResult result;
    result.kind = node["kind"].nonEmptyString();
    result.status = node["status"].nonEmptyString();
    Node count = node["count"];
    result.count = count.integer();
    if (result.count < 0)
        count.fail("must not be negative");
    std::set<std::string> seen;
    for (const Node& item : node["joints"].items()) {
        JointResult joint;
        Node name = item["name"];
        joint.name = name.string();
        if (!InspectionRenderer::jointID(joint.name))
            name.fail("is not a known joint name");
        if (!seen.insert(joint.name).second)
            name.fail("repeats a joint already listed in this result");
        joint.x = item["x"].number();
        joint.y = item["y"].number();
        Node confidence = item["confidence"];
        joint.confidence = confidence.number();
        if (joint.confidence < 0 || joint.confidence > 1)
            confidence.fail("must lie between 0 and 1");
        result.joints.push_back(std::move(joint));
    }
    return result;
}

Json write(const DravikResult& result) {
    Json joints = Json::array();
    for (const JointResult& joint : result.joints)
        joints.push_back(Json{{"name", joint.name},
                              {"x", joint.x},
                              {"y", joint.y},
                              {"confidence", joint.confidence}});
    return Json{{"kind", result.kind},
                {"status", result.status},
                {"count", result.count},
                {"joints", std::move(joints)}};
}

DetectionRetry readRetry(const Node& node) {
    DetectionRetry retry;
    if (auto primary = node.find("primary"))
        retry.primary = readResult(*primary);
    if (auto refined = node.find("refined"))
        retry.refined = readResult(*refined);
    return retry;
}

Json write(const DetectionRetry& retry) {
    Json body = Json::object();
    if (retry.primary)
        body["primary"] = write(*retry.primary);
    if (retry.refined)
        body["refined"] = write(*retry.refined);
    return body;
}

} // namespace dravik::json
