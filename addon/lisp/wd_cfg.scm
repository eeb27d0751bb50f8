;;;; The drawing's parameters and the add-on's variables.
;;;;
;;;; GBL_wd_m         the attributes of the drawing's WD_M block, (("WIRELAYS" . "BK*,RD*")
;;;;                  ("SHEET" . "1") ...), as last read by wd_cfg_read_dwg_params; nil
;;;;                  for a drawing without the block.
;;;; GBL_wd_wirelays  the WIRELAYS text of that block (the wire layer patterns), or nil.
;;;; GBL_wd_prj       the active project file, or nil. ZelAddonLisp.ovm keeps it in step
;;;;                  when a project opens or closes and when a document becomes current.

;; A file loaded again keeps what the variables hold.
(if (not (defined? 'GBL_wd_m)) (setq GBL_wd_m nil))
(if (not (defined? 'GBL_wd_wirelays)) (setq GBL_wd_wirelays nil))
(if (not (defined? 'GBL_wd_prj)) (setq GBL_wd_prj nil))

;; (wd_cfg_read_dwg_params): reads the WD_M attributes of the current drawing into
;; GBL_wd_m and GBL_wd_wirelays. T, or nil when the drawing has no WD_M block. The
;; drawing is read at every call, so a changed WIRELAYS is seen at once.
(define (wd_cfg_read_dwg_params . ignored)
  (let ((attributes (zel_wd_m_attributes)))
    (setq GBL_wd_m attributes
          GBL_wd_wirelays (cdr (assoc "WIRELAYS" attributes)))
    (if attributes T nil)))

;; (c:wd_reread_dwg_params): the command form, called after WIRELAYS was changed.
(define (c:wd_reread_dwg_params . ignored)
  (wd_cfg_read_dwg_params))

;; (zel_get_var "name"): "GBL_wd_usr" is the add-on's per-user folder, ending in "/", made
;; if missing; "GBL_wd_prj" the active project file. Any other name: the document's
;; variable of that name, else the add-on's global value of that name, else nil.
(define (zel_get_var . args)
  (let ((name (nth 0 args)))
    (cond ((not (wd-path? name))
           (wd-complain "zel_get_var" "give the name of the variable as a text"))
          ((string-ci=? name "GBL_wd_usr") (zel_gbl_get "GBL_wd_usr"))
          ((string-ci=? name "GBL_wd_prj") (zel_project_active))
          (T (wd-variable-value name)))))

(define (wd-variable-value name)
  (let ((variable (module-variable (current-module) (string->symbol name))))
    (if (and variable
             (variable-bound? variable)
             (not (procedure? (variable-ref variable))))
        (variable-ref variable)
        (zel_gbl_get name))))

(vl-orvex-defun 'wd_cfg_read_dwg_params)
(vl-orvex-defun 'c:wd_reread_dwg_params)
(vl-orvex-defun 'zel_get_var)
