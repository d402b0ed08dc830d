// DuckDB: a delimited file to a table in memory.
//
//     node duckdb_rows.js FILE THREADS
const fs = require('fs');
const { DuckDBInstance } = require('@duckdb/node-api');

(async () => {
  const [file, threads] = process.argv.slice(2);
  const database = await (await DuckDBInstance.create(':memory:', { threads })).connect();
  const start = process.hrtime.bigint();
  await database.run(`create table c as select * from read_csv('${file}', header = true, all_varchar = true, delim = ',')`);
  const seconds = Number(process.hrtime.bigint() - start) / 1e9;
  const rows = (await database.runAndReadAll('select count(*) from c')).getRows();
  console.log(JSON.stringify({ seconds, bytes: fs.statSync(file).size, contacts: Number(rows[0][0]) }));
})();
