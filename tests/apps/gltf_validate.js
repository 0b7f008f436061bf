// node gltf_validate.js FILE...: the Khronos validator's verdict, an exit code of 1 on errors; 77 without the package.
const fs = require('fs');
let validator;
try {
    validator = require('gltf-validator');
} catch (error) {
    process.exit(77);
}
(async () => {
    let failed = false;
    for (const file of process.argv.slice(2)) {
        const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {maxIssues: 20});
        const issues = report.issues;
        failed = failed || issues.numErrors > 0 || issues.numWarnings > 0;
        for (const message of issues.messages.filter((each) => each.severity < 2)) {
            console.log(`${file}: ${message.code} ${message.pointer}: ${message.message}`);
        }
    }
    process.exit(failed ? 1 : 0);
})();
