// DuckDB: the five groupings as SQL over tables in memory.
//
//     node duckdb_groups.js FOLDER THREADS      the folder is what tables.py wrote
//
// Of the forms in which a grouping is written, the faster one counts.
const fs = require('fs');
const path = require('path');
const { DuckDBInstance } = require('@duckdb/node-api');

const ALL = 'fn,n1,n2,n3,n4,n5,nickname,org,title,bday,note,url,categories,rev,showas,tels,emails,adrs';
const columns = (names) => '{' + names.map((name) => `'${name}':'${/id$/.test(name) ? 'INTEGER' : 'VARCHAR'}'`).join(',') + '}';
const TABLES = {
  contact: ['id', ...ALL.split(',')],
  phone: ['cid', 'value'],
  email: ['cid', 'value'],
  address: ['cid', 'value'],
};

(async () => {
  const [folder, threads] = process.argv.slice(2);
  const database = await (await DuckDBInstance.create(':memory:', { threads })).connect();
  const one = async (sql) => Number((await database.runAndReadAll(sql)).getRows()[0][0]);
  for (const [table, names] of Object.entries(TABLES))
    await database.run(`create table ${table} as select * from read_csv('${folder}/${table}.tsv', delim = '\t', header = false,
      quote = '', escape = '', nullstr = '\x01', columns = ${columns(names)})`);
  const result = { contacts: await one('select count(*) from contact'), seconds: 0, found: {} };
  const statements = fs.readFileSync(path.join(__dirname, 'groupings.sql'), 'utf8').split('--@ ').slice(1);
  for (const statement of statements) {
    const [title, ...lines] = statement.trim().split('\n');
    const [name, form] = title.split('.');
    const sql = lines.join(' ').replaceAll('{LIST}', 'list').replaceAll('{ALL}', ALL);
    const start = process.hrtime.bigint();
    await database.run('create or replace temp table r as ' + sql);
    const seconds = Number(process.hrtime.bigint() - start) / 1e9;
    result[name + '_seconds'] = Math.min(seconds, result[name + '_seconds'] ?? Infinity);
    if (form === 'list') result.found[name] = await one('select count(*) from r');
  }
  for (const name of Object.keys(result.found)) result.seconds += result[name + '_seconds'];
  console.log(JSON.stringify(result));
})();
