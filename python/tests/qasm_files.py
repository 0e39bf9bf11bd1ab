"""Programs in OpenQASM 2 as collections of benchmarks have them, by name."""

HEAD = 'OPENQASM 2.0;\ninclude "qelib1.inc";\n'

FILES = {
    "ghz": HEAD + "qreg q[3];\ncreg c[3];\nh q[0];\ncx q[0],q[1];\ncx q[1],q[2];\n"
    "barrier q[0],q[1],q[2];\nmeasure q[0] -> c[0];\nmeasure q[1] -> c[1];\n"
    "measure q[2] -> c[2];\n",
    "broadcast": HEAD + "qreg a[2]; qreg b[2]; creg m[2];\nh a; cx a,b; cx a[0],b; barrier;\n"
    "measure b -> m; reset a;",
    "adder": HEAD + "gate majority a,b,c { cx c,b; cx c,a; ccx a,b,c; }\n"
    "gate unmaj a,b,c\n{\n  ccx a,b,c;\n  cx c,a;\n  cx a,b;\n}\n"
    "qreg cin[1];\nqreg a[2];\nqreg b[2];\nqreg cout[1];\ncreg ans[3];\n"
    "x a[0]; // a = 1\nx b;    // b = 3\nmajority cin[0],b[0],a[0];\nmajority a[0],b[1],a[1];\n"
    "cx a[1],cout[0];\nunmaj a[0],b[1],a[1];\nunmaj cin[0],b[0],a[0];\n"
    "measure b[0] -> ans[0];\nmeasure b[1] -> ans[1];\nmeasure cout[0] -> ans[2];\n",
    "teleport": HEAD + "qreg q[3]; creg c0[1]; creg c1[1]; creg c2[1];\ngate post q { }\n"
    "u3(0.3,0.2,0.1) q[0]; h q[1]; cx q[1],q[2]; barrier q; cx q[0],q[1]; h q[0];\n"
    "measure q[0] -> c0[0]; measure q[1] -> c1[0];\nif(c0==1) z q[2];\nif(c1==1) x q[2];\n"
    "post q[2]; measure q[2] -> c2[0];",
    "inverse_qft": HEAD + "qreg q[3]; creg c[3]; h q; barrier q;\nh q[0]; measure q[0] -> c[0];\n"
    "if(c==1) u1(pi/2) q[1];\nh q[1]; measure q[1] -> c[1];\nif(c==1) u1(pi/4) q[2];\n"
    "if(c==2) u1(pi/2) q[2]; if ( c == 3 ) u1(pi/2+pi/4) q[2];\nh q[2]; measure q[2] -> c[2];",
    "no header": "OPENQASM 2.0;\nqreg q[2];\ngate h a { U(pi/2,0,pi) a; }\nU(0.1,0.2,0.3) q[0];\n"
    "h q;\nCX q[0],q[1];\n",
    "block comment": "/* a program\n   of two lines; qreg z[1]; */\n"
    + HEAD
    + "qreg /* here */ q[2]; // qreg r[2];\nh q[0]; /**/ cx q[0],q[1];\n",
    "odd spacing": 'OPENQASM   2.0 ;include"qelib1.inc"  ;qreg q [ 2 ] ;creg c[ 2];\n\n'
    "rz( pi / 4 )   q [0] ;cx q[0]  ,\n q[1];measure q->c;measure q [1]->c[ 0 ];;",
    "nested": HEAD + "gate one(t) a { rx(t/2) a; rz(-t^2) a; }\n"
    "gate two(t,u) a,b { one(t+u) b; cx a,b; one(sin(t)*u) a; barrier a,b; }\n"
    "gate three(t) a,b,c { two(t,pi/t) c,a; two(-t,2) b,c; swap a,b; }\n"
    "qreg q[3]; qreg r[3];\nthree(0.7) q[2],q[0],q[1]; three(ln(3)) q[0],r[1],r[0];",
    "expressions": HEAD + "qreg q[1];\nrx(-2^2/3) q[0]; ry(2^3^0.5) q[0]; rz(--1+-(2)) q[0];\n"
    "u2(sqrt(2)*exp(-1),cos(pi)/tan(1)) q[0]; u1(1e-3) q[0]; rx(.5e1-5.) q[0]; rz(1-2-3/4/5) q[0];",
    "own swap": HEAD + "gate swap a,b { cx a,b; h a; }\ngate rzz(t) a,b { cx a,b; u1(t) b; }\n"
    "qreg p[2]; swap p[0],p[1]; rzz(0.3) p[1],p[0];",
    "conditions": HEAD
    + "qreg q[2]; creg c[2]; creg d[1];\nmeasure q -> c;\nif(c==3) cx q[0],q[1];\n"
    "if(d==1) reset q[0]; if(c==1) measure q[1] -> d[0]; if(c==9) x q[0];\n"
    "if(c==0) swap q[0],q[1];",
    "several": HEAD + "qreg q[2]; creg c[1]; h q[1]; qreg anc[1]; creg d[2];\n"
    "cx q[1],anc[0]; measure anc[0] -> d[1]; measure q[0] -> c[0];",
    "opaque unused": HEAD + "opaque magic(t) a,b;\nqreg q[1]; x q[0];",
    "empty registers": HEAD + "qreg q[0]; creg c[0]; qreg r[1]; x r; barrier r;",
}
